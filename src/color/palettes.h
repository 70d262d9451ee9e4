// Palette arrays, the nearest-colour search, and maps between palettes.
#pragma once

#include <zavo.h>

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

// d * d for d = 0 to 255.
extern const uint32_t squareTable[256];

// The fixed palette of 1 to 8 bits (1 << bits entries); null for another depth.
[[nodiscard]] const RGBQUAD* fixedPalette(int bitsPerPixel);

// Index of the palette entry nearest to a colour of channels 0 to 255; 0xFFFFFFFF for an empty palette. Black and
// white prefer the ends of the palette; on equal distance a later entry wins only when its channels stand in the
// same order as the colour's.
[[nodiscard]] unsigned nearestIndex(const RGBQUAD* palette, unsigned count, unsigned red, unsigned green,
                                    unsigned blue);

// Fills `map` with the destination index of every source index. A null source is a 256-level grey ramp, a null
// destination a 256-level grey target. True when the map changes nothing.
bool buildPaletteMap(uint8_t map[256], const RGBQUAD* source, unsigned sourceCount, const RGBQUAD* destination,
                     unsigned destinationCount);

// Reads up to 256 entries of a bitmap's palette as a palette array; the number read. The rest of `palette` is zeroed.
unsigned readPalette(const BitmapHandle& bitmap, RGBQUAD palette[256]);

}  // namespace zavo
