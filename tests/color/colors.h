// Bitmaps as plain colours, for tests of what becomes of colours.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <vector>

#include "support/test_bitmap.h"

namespace zavotest {

struct Color {
  unsigned red = 0, green = 0, blue = 0;
  auto operator<=>(const Color&) const = default;
};

using Palette = std::vector<RGBQUAD>;

inline Color colorOf(const RGBQUAD& entry) {
  return {entry.rgbRed, entry.rgbGreen, entry.rgbBlue};
}

inline RGBQUAD quad(unsigned red, unsigned green, unsigned blue, unsigned reserved = 0) {
  return {static_cast<BYTE>(blue), static_cast<BYTE>(green), static_cast<BYTE>(red), static_cast<BYTE>(reserved)};
}

inline unsigned brightness(const Color& c) {
  return (2 * c.red + 5 * c.green + c.blue + 4) / 8;
}

// What pixels are made of.
struct Format {
  int depth = 0;         // 0: grey levels of 8 bits
  int order = 0;         // of depths from 16 on
  Palette palette = {};  // of depths up to 8; empty: the fixed one

  [[nodiscard]] unsigned bits() const { return depth == 0 ? 8 : static_cast<unsigned>(depth); }
  [[nodiscard]] size_t rowBytes(int width) const { return (static_cast<size_t>(width) * bits() + 7) / 8; }
  [[nodiscard]] const RGBQUAD* colors() const {
    return palette.empty() ? Zv_IntGetFixedPalette(depth) : palette.data();
  }
};

Format formatOf(const BitmapHandle& bitmap);

// A pixel, given as Picture has it.
Color colorOf(uint32_t pixel, const Format& format);

// What becomes of it in another format.
uint32_t convertedPixel(uint32_t pixel, const Format& from, const Format& to);

// Pixels of a packed row.
uint32_t readPixel(const uint8_t* row, size_t x, unsigned bits);
void writePixel(uint8_t* row, size_t x, unsigned bits, uint32_t pixel);

// All entries of a palette.
Palette entriesOf(HPALETTE palette);

// `count` entries of noise.
Palette noisePalette(size_t count, std::mt19937& random);

// Levels from black to white in `count` steps, rounded down.
Palette grayPalette(size_t count);

// Puts another palette into a bitmap of up to 8 bits.
void setPalette(BitmapHandle& bitmap, const Palette& palette);

// The colour of every pixel, row by row.
std::vector<Color> colorsOf(BitmapHandle& bitmap);

// What follows the last pixel of each row.
bool paddingIsZero(BitmapHandle& bitmap);

// Fills a bitmap with slowly changing colours and a little noise, as pictures have them; indexes are of noise.
void fillWithPicture(BitmapHandle& bitmap, std::mt19937& random);

}  // namespace zavotest
