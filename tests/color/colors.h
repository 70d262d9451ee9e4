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

inline unsigned brightness(const Color& c) {
  return (2 * c.red + 5 * c.green + c.blue + 4) / 8;
}

// All entries of a bitmap's palette.
Palette paletteOf(const BitmapHandle& bitmap);

// `count` entries of noise.
Palette noisePalette(size_t count, std::mt19937& random);

// Levels from black to white in `count` steps, rounded down.
Palette grayPalette(size_t count);

// Puts another palette into a bitmap of up to 8 bits.
void setPalette(BitmapHandle& bitmap, const Palette& palette);

// The colour of every pixel, row by row.
std::vector<Color> colorsOf(BitmapHandle& bitmap);

// Fills a bitmap with slowly changing colours and a little noise, as pictures have them; indexes are of noise.
void fillWithPicture(BitmapHandle& bitmap, std::mt19937& random);

}  // namespace zavotest
