// Rows of one colour, for fills and for the backgrounds of operations that uncover pixels.
#pragma once

#include <zavo.h>

#include <cstdint>

namespace zavo {

// Writes one colour into the first `count` pixels of a row of the bitmap's format. Up to 8 bits it is an index: the
// colour value's own, or that of the nearest colour as the graphics interface finds it. The fourth byte of 32-bit
// pixels and the alpha bit of 16-bit pixels become 0. Bits after the last pixel in its byte are kept at 3, 5, 6 and 7
// bits a pixel; at 1, 2 and 4 bits that byte is written whole.
void fillColorRow(uint8_t* row, const BitmapHandle& bitmap, COLORREF color, unsigned count);

}  // namespace zavo
