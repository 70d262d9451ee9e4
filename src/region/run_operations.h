// Set operations on regions.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "region/region.h"

namespace zavo {

// Bit (2 * in first + in second) says whether such a pixel is in the result.
enum class RunOperation : uint8_t {
  both = 0b1000,
  firstNotSecond = 0b0100,
  secondNotFirst = 0b0010,
  either = 0b1110,
  exactlyOne = 0b0110,
  first = 0b1100,
};

// Makes `result` of two regions, cut to `clip`; null stands for an empty region. KSUCCESS or KERR_NO_MEMORY.
[[nodiscard]] int combineRuns(OwnedRegion& result, const BitmapRegion* first, const BitmapRegion* second,
                              RunOperation operation, const RECT& clip);

}  // namespace zavo
