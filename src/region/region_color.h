// The pixels of one colour as a region.
#pragma once

#include <zavo.h>

#include "region/region.h"

namespace zavo {

// Makes a region of the pixels of an allocated bitmap that have the colour; null when there are none. A palette index
// (top byte 1) stands for itself, a colour in a palette bitmap for the first entry that equals it. KSUCCESS,
// KERR_NO_MEMORY or the code of a failed row.
[[nodiscard]] int makeColorRegion(OwnedRegion& region, BitmapHandle& bitmap, COLORREF color);

}  // namespace zavo
