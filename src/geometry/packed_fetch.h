// Single pixels of packed rows, for loops over a depth that is known when they are compiled.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zavo {

// Pixel `pixel` of a row of 1 to 7 bits. No byte without a bit of it is read.
template <unsigned bits>
unsigned packedAt(const uint8_t* row, uint32_t pixel) {
  constexpr unsigned mask = (1u << bits) - 1;
  if constexpr (8 % bits == 0) {
    constexpr unsigned perByte = 8 / bits;
    return row[pixel / perByte] >> (8 - bits - pixel % perByte * bits) & mask;
  } else {
    const unsigned firstBit = pixel % 8 * bits;
    const uint8_t* bytes = row + size_t{pixel / 8} * bits + firstBit / 8;
    const unsigned endBit = firstBit % 8 + bits;
    const unsigned second = endBit > 8 ? 1 : 0;
    return (unsigned{bytes[0]} << 8 | bytes[second]) >> (16 - endBit) & mask;
  }
}

}  // namespace zavo
