// Rows of one colour, for fills and for the backgrounds of operations that uncover pixels.
#pragma once

#include <zavo.h>

#include <cstdint>

namespace zavo {

// The pixel that stands for a colour value in the bitmap's format, lowest byte first in memory. Up to 8 bits it is an
// index: the colour value's own, or that of the nearest colour as the graphics interface finds it.
[[nodiscard]] uint32_t pixelOfColor(const BitmapHandle& bitmap, COLORREF color);

// Writes one pixel value into the first `count` pixels of a packed row. Bits after the last pixel in its byte are
// kept at 3, 5, 6 and 7 bits a pixel; at 1, 2 and 4 bits that byte is written whole.
void fillPixelRow(uint8_t* row, int bitsPerPixel, uint32_t pixel, unsigned count);

// Writes one colour into the first `count` pixels of a row of the bitmap's format. The fourth byte of 32-bit pixels
// and the alpha bit of 16-bit pixels become 0.
void fillColorRow(uint8_t* row, const BitmapHandle& bitmap, COLORREF color, unsigned count);

}  // namespace zavo
