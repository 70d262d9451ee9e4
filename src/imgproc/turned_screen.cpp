// The plain row function of turned screens.
#include "imgproc/turned_screen.h"

#include "geometry/sine_table.h"

namespace zavo {

void turnedRowPlain(uint8_t* packed, const uint8_t* levels, unsigned width, const ThresholdMatrix& matrix,
                    ScreenPlace place, ScreenPlace step) {
  for (unsigned x = 0; x < width; x += 8, ++packed, levels += 8) {
    const unsigned count = width - x < 8 ? width - x : 8;
    unsigned bits = 0;
    for (unsigned k = 0; k < count; ++k, place.column += step.column, place.row += step.row) {
      const uint8_t threshold = matrix[place.row / sineScale & 7][place.column / sineScale & 7];
      bits |= (levels[k] > threshold ? 0x80u : 0) >> k;
    }
    *packed = static_cast<uint8_t>(bits);
  }
}

}  // namespace zavo
