// Quarter turns of the stored image: exact, every pixel kept.
#pragma once

#include <zavo.h>

#include "core/owners.h"
#include "core/progress.h"

namespace zavo {

// Builds in `turned` the stored image of `source`, turned clockwise by `quarters` (1 to 3) quarters, with the source's
// palette, settings and turned region. KSUCCESS, KERR_NO_MEMORY, a row's code, or what the status callback returned.
[[nodiscard]] int buildQuarterTurn(OwnedBitmap& turned, BitmapHandle& source, int quarters, ProgressShare share = {});

// The same in place: built aside and moved in.
[[nodiscard]] int turnInPlace(BitmapHandle& bitmap, int quarters, ProgressShare share = {});

}  // namespace zavo
