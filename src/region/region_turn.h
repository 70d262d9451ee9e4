// Quarter turns of run lists.
#pragma once

#include <zavo.h>

#include "core/perspective.h"
#include "region/region.h"

namespace zavo {

// Makes in `turned` the region turned by a quarter, clockwise or the other way, together with an image of `size`.
// KSUCCESS or KERR_NO_MEMORY.
[[nodiscard]] int turnRuns(OwnedRegion& turned, const BitmapRegion& region, bool clockwise, ImageSize size);

}  // namespace zavo
