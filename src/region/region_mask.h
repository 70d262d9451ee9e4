// Regions as 1-bit images.
#pragma once

#include <zavo.h>

#include "core/owners.h"

namespace zavo {

// Makes a 1-bit image of the bitmap's size and perspective, without a palette: index 1 in the bitmap's region (without
// one: everywhere), 0 outside. KSUCCESS, the code of a failed allocation or row, or what the status callback returned.
[[nodiscard]] int makeRegionMask(OwnedBitmap& mask, const BitmapHandle& bitmap);

}  // namespace zavo
