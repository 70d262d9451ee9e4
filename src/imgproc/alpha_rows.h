// The alpha of a row's pixels: the fourth byte of 32-bit pixels, bit 15 of 16-bit ones.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zavo {

[[nodiscard]] constexpr bool hasAlpha(int bitsPerPixel) {
  return bitsPerPixel == 16 || bitsPerPixel == 32;
}

// A level a pixel; 0 or 255 for 16 bits.
inline void takeAlpha(uint8_t* levels, const uint8_t* pixels, unsigned width, int bitsPerPixel) {
  for (size_t x = 0; x < width; ++x) {
    levels[x] =
        bitsPerPixel == 32 ? pixels[4 * x + 3] : static_cast<uint8_t>((pixels[2 * x + 1] & 0x80) != 0 ? 255 : 0);
  }
}

// Levels above 127 set the bit of 16-bit pixels.
inline void putAlpha(uint8_t* pixels, const uint8_t* levels, unsigned width, int bitsPerPixel) {
  for (size_t x = 0; x < width; ++x) {
    if (bitsPerPixel == 32) {
      pixels[4 * x + 3] = levels[x];
    } else {
      pixels[2 * x + 1] = static_cast<uint8_t>((pixels[2 * x + 1] & 0x7F) | (levels[x] & 0x80));
    }
  }
}

}  // namespace zavo
