// Exchanging rows and columns of packed pixels: what every quarter turn comes down to.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zavo {

// Destination pixel (x, y) becomes source pixel (y, x). `width` and `height` are those of the source; the destination
// has `height` pixels a row and `width` rows. A negative stride walks rows upwards, which turns the transposition into
// a quarter turn: upwards through the source clockwise, upwards through the destination counter-clockwise.
// Destination rows are written whole bytes at a time, up to the byte that holds their last pixel.
using TransposeFunction = void (*)(uint8_t* destination, ptrdiff_t destinationStride, const uint8_t* source,
                                   ptrdiff_t sourceStride, unsigned width, unsigned height);

// For every depth; work goes in blocks that fit the first cache, so that neither side is walked by columns.
[[nodiscard]] TransposeFunction transposeFunction(int bitsPerPixel);

}  // namespace zavo
