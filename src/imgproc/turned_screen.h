// Rows of levels against a turned screen. Plain code, and faster code for processors with SSSE3 that gives the same
// bytes.
#pragma once

#include <cstdint>

#include "color/threshold.h"

namespace zavo {

// A place on the endlessly repeated screen, in units of 1 / sineScale cells. It may wrap around 32 bits without a
// seam, because the screen repeats after 8 cells.
struct ScreenPlace {
  uint32_t column;
  uint32_t row;
};

// Writes bit 1 for every level above its threshold. `place` is that of the first pixel, `step` the way to the next.
// Bits are packed most significant first, (width + 7) / 8 bytes are written, bits after the last pixel are 0.
using TurnedRowFunction = void (*)(uint8_t* packed, const uint8_t* levels, unsigned width,
                                   const ThresholdMatrix& matrix, ScreenPlace place, ScreenPlace step);

void turnedRowPlain(uint8_t* packed, const uint8_t* levels, unsigned width, const ThresholdMatrix& matrix,
                    ScreenPlace place, ScreenPlace step);
void turnedRowSsse3(uint8_t* packed, const uint8_t* levels, unsigned width, const ThresholdMatrix& matrix,
                    ScreenPlace place, ScreenPlace step);

}  // namespace zavo
