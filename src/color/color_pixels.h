// Single colour pixels of 16, 24 and 32 bits and of 8-bit grey, loaded from and stored to memory. Colours travel in
// the order of memory: `first` is blue for colour order 1 and red for colour order 0.
#pragma once

#include <cstdint>
#include <cstring>

#include "color/palettes.h"

namespace zavo {

struct PixelColor {
  uint8_t first, second, third, alpha;
};

[[nodiscard]] constexpr PixelColor swapEnds(PixelColor color) {
  return {color.third, color.second, color.first, color.alpha};
}

// 5-5-5 with `first` in the low bits; bit 15 is alpha above 127.
struct Pixel16 {
  static constexpr unsigned bytes = 2;
  static PixelColor load(const uint8_t* pixel) {
    uint16_t word;
    memcpy(&word, pixel, 2);
    return {widen5(word & 31u), widen5(word >> 5 & 31u), widen5(word >> 10 & 31u),
            static_cast<uint8_t>((word & 0x8000u) != 0 ? 255 : 0)};
  }
  static void store(uint8_t* pixel, PixelColor color) {
    const auto word = static_cast<uint16_t>(color.first >> 3 | color.second >> 3 << 5 | color.third >> 3 << 10 |
                                            color.alpha >> 7 << 15);
    memcpy(pixel, &word, 2);
  }
};

struct Pixel24 {
  static constexpr unsigned bytes = 3;
  static PixelColor load(const uint8_t* pixel) { return {pixel[0], pixel[1], pixel[2], 0}; }
  static void store(uint8_t* pixel, PixelColor color) {
    pixel[0] = color.first;
    pixel[1] = color.second;
    pixel[2] = color.third;
  }
};

struct Pixel32 {
  static constexpr unsigned bytes = 4;
  static PixelColor load(const uint8_t* pixel) {
    PixelColor color;
    memcpy(&color, pixel, 4);
    return color;
  }
  static void store(uint8_t* pixel, PixelColor color) { memcpy(pixel, &color, 4); }
};

// Grey counts as blue first.
struct PixelGray {
  static constexpr unsigned bytes = 1;
  static PixelColor load(const uint8_t* pixel) { return {*pixel, *pixel, *pixel, 0}; }
  static void store(uint8_t* pixel, PixelColor color) { *pixel = luminance(color.third, color.second, color.first); }
};

}  // namespace zavo
