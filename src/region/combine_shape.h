// How a new shape changes a bitmap's region: the common end of all functions that set regions.
#pragma once

#include <zavo.h>

#include "region/region.h"

namespace zavo {

// Combines the bitmap's region with a shape that lies within the bitmap. A null shape (one that was empty before it was
// cut) changes nothing, whatever the mode. KSUCCESS; KERR_BAD_PARAMETER for an unknown mode; KERR_NO_MEMORY; the
// bitmap's region is as it was after a failure.
[[nodiscard]] int combineShape(BitmapHandle& bitmap, OwnedRegion shape, int combineMode);

}  // namespace zavo
