// Size arithmetic of images. Products are formed in 64 bits, so that a size too large shows instead of wrapping.
#pragma once

#include <cstdint>

namespace zavo {

// Bytes of a stored row, padded to a multiple of 4.
[[nodiscard]] constexpr uint64_t rowBytesFor(uint64_t width, unsigned bitsPerPixel) {
  return (width * bitsPerPixel + 31) / 32 * 4;
}

// Bytes that `count` packed pixels take, starting at a byte.
[[nodiscard]] constexpr uint64_t packedBytesFor(uint64_t count, unsigned bitsPerPixel) {
  return (count * bitsPerPixel + 7) / 8;
}

// Byte of a row that holds the first bit of pixel `column`.
[[nodiscard]] constexpr unsigned columnOffset(unsigned column, unsigned bitsPerPixel) {
  return static_cast<unsigned>(uint64_t{column} * bitsPerPixel / 8);
}

}  // namespace zavo
