// Mirroring the stored image in place, top to bottom and left to right.
#pragma once

#include <zavo.h>

#include "core/progress.h"

namespace zavo {

// Exchanges the stored rows end for end; the region goes along. KSUCCESS, KERR_NO_MEMORY, a row's code, or what the
// status callback returned.
[[nodiscard]] int flipRows(BitmapHandle& bitmap, ProgressShare share = {});

// Reverses every stored row; the region goes along. Results as flipRows.
[[nodiscard]] int reverseColumns(BitmapHandle& bitmap, ProgressShare share = {});

}  // namespace zavo
