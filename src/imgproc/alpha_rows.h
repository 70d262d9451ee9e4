// The alpha of a row's pixels: the fourth byte of 32-bit pixels, bit 15 of 16-bit ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zavo {

[[nodiscard]] constexpr bool hasAlpha(int bitsPerPixel) {
  return bitsPerPixel == 16 || bitsPerPixel == 32;
}

// The bits of a 16- or 32-bit pixel that are its alpha.
template <typename Pixel>
constexpr Pixel alphaMask = sizeof(Pixel) == 4 ? static_cast<Pixel>(0xFF000000u) : static_cast<Pixel>(0x8000u);

// A level a pixel; 0 or 255 for 16 bits.
inline void takeAlpha(uint8_t* levels, const uint8_t* pixels, unsigned width, int bitsPerPixel) {
  if (bitsPerPixel == 32) {
    for (size_t x = 0; x < width; ++x) levels[x] = pixels[4 * x + 3];
  } else {
    for (size_t x = 0; x < width; ++x) levels[x] = (pixels[2 * x + 1] & 0x80) != 0 ? 255 : 0;
  }
}

// Levels above 127 set the bit of 16-bit pixels.
inline void putAlpha(uint8_t* pixels, const uint8_t* levels, unsigned width, int bitsPerPixel) {
  if (bitsPerPixel == 32) {
    for (size_t x = 0; x < width; ++x) pixels[4 * x + 3] = levels[x];
  } else {
    for (size_t x = 0; x < width; ++x) {
      pixels[2 * x + 1] = static_cast<uint8_t>((pixels[2 * x + 1] & 0x7F) | (levels[x] & 0x80));
    }
  }
}

// Pixels take the colours of others and keep their alpha.
template <typename Pixel>
void putColors(uint8_t* pixels, const uint8_t* colors, unsigned width) {
  for (size_t x = 0; x < width; ++x, pixels += sizeof(Pixel), colors += sizeof(Pixel)) {
    Pixel pixel, color;
    memcpy(&pixel, pixels, sizeof pixel);
    memcpy(&color, colors, sizeof color);
    pixel = static_cast<Pixel>((pixel & alphaMask<Pixel>) | (color & ~alphaMask<Pixel>));
    memcpy(pixels, &pixel, sizeof pixel);
  }
}

}  // namespace zavo
