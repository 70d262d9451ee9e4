// Turning the stored image by any angle.
#pragma once

#include <zavo.h>

#include "core/progress.h"

namespace zavo {

// Turns the stored image clockwise by `angle` hundredths of a degree, in place, with the flags and fill colour of
// Zv_RotateBitmapFine; the region turns along.
[[nodiscard]] int rotateStored(BitmapHandle& bitmap, int angle, unsigned flags, COLORREF fill,
                               ProgressShare share = {});

}  // namespace zavo
