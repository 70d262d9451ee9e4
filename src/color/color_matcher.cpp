// Setting a colour matcher up.
#include "color/color_matcher.h"

#include <algorithm>

namespace zavo {

void ColorMatcher::prepare(const RGBQUAD* palette, unsigned count, const uint32_t* table) {
  palette_ = palette;
  count_ = count;
  table_ = table;
  // Every slot starts with the answer for black: true wherever black belongs, never asked for elsewhere.
  std::fill(std::begin(known_), std::end(known_), nearestIndex(palette, count, 0, 0, 0) << 24);
}

}  // namespace zavo
