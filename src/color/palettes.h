// Palette arrays, the nearest-colour search, and maps between palettes.
#pragma once

#include <zavo.h>

#include <array>
#include <cstdint>

namespace zavo {

constexpr unsigned matchTableEntries = 32768;

// Key of a colour in 15-bit tables: the top five bits of each channel.
[[nodiscard]] constexpr unsigned colorKey(unsigned red, unsigned green, unsigned blue) {
  return (red >> 3) << 10 | (green >> 3) << 5 | blue >> 3;
}

// A 5-bit channel value widened to 8 bits.
[[nodiscard]] constexpr uint8_t widen5(unsigned channel) {
  return static_cast<uint8_t>(channel << 3 | channel >> 2);
}

// Brightness of a colour, 0 to 255.
[[nodiscard]] constexpr uint8_t luminance(unsigned red, unsigned green, unsigned blue) {
  return static_cast<uint8_t>((2 * red + 5 * green + blue + 4) >> 3);
}

// Equal but for the reserved byte.
[[nodiscard]] constexpr bool sameColor(const RGBQUAD& a, const RGBQUAD& b) {
  return a.rgbRed == b.rgbRed && a.rgbGreen == b.rgbGreen && a.rgbBlue == b.rgbBlue;
}

[[nodiscard]] constexpr bool isGray(const RGBQUAD& color) {
  return color.rgbRed == color.rgbGreen && color.rgbGreen == color.rgbBlue;
}

// d * d for d = 0 to 255.
inline constexpr auto squareTable = [] {
  std::array<uint32_t, 256> squares{};
  for (uint32_t d = 0; d < 256; ++d) squares[d] = d * d;
  return squares;
}();

// The fixed palette of 1 to 8 bits (1 << bits entries); null for another depth.
[[nodiscard]] const RGBQUAD* fixedPalette(int bitsPerPixel);

// 256 entries: the 6 x 6 x 6 colour cube, index 36 * (red / 51) + 6 * (green / 51) + blue / 51, then black.
[[nodiscard]] const RGBQUAD* cubePalette();

// Index of the palette entry nearest to a colour of channels 0 to 255; 0xFFFFFFFF for an empty palette. Black and
// white prefer the ends of the palette; on equal distance a later entry wins only when its channels stand in the
// same order as the colour's.
[[nodiscard]] unsigned nearestIndex(const RGBQUAD* palette, unsigned count, unsigned red, unsigned green,
                                    unsigned blue);

// Fills `map` with the destination index of every source index, the rest with 0. A null source is a 256-level grey
// ramp, a null destination a 256-level grey target. Counts go up to 256. True when the map changes nothing.
bool buildPaletteMap(uint8_t map[256], const RGBQUAD* source, unsigned sourceCount, const RGBQUAD* destination,
                     unsigned destinationCount);

// Reads up to 256 entries of a bitmap's palette as a palette array; the number read. The rest of `palette` is zeroed.
unsigned readPalette(const BitmapHandle& bitmap, RGBQUAD palette[256]);

// As readPalette; a bitmap without a palette has the fixed one of its depth, of 1 to 8 bits.
unsigned readPaletteOrFixed(const BitmapHandle& bitmap, RGBQUAD palette[256]);

// The number of entries of a palette object, 0 for null.
[[nodiscard]] unsigned paletteSize(HPALETTE palette);

// Reads entries of a palette object; the number read, fewer than asked for at the palette's end.
unsigned readEntries(RGBQUAD* colors, HPALETTE palette, unsigned first, unsigned count);

// A new palette object, null on failure; the caller owns it.
[[nodiscard]] HPALETTE createPalette(const RGBQUAD* colors, unsigned count);

}  // namespace zavo
