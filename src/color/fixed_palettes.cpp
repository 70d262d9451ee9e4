// The built-in palettes: one for each depth of 1 to 8 bits, the colour cube and the grey ramps. All are computed by
// the compiler from the rule that defines them.
#include <zavo.h>

#include <algorithm>
#include <array>

#include "color/palettes.h"
#include "core/memory.h"

namespace zavo {
namespace {

constexpr RGBQUAD color(unsigned red, unsigned green, unsigned blue) {
  return {static_cast<BYTE>(blue), static_cast<BYTE>(green), static_cast<BYTE>(red), 0};
}

constexpr RGBQUAD gray(unsigned level) {
  return color(level, level, level);
}

// Level k of `levels` evenly spaced ones from 0 to 255, rounded to the nearest.
constexpr unsigned level(unsigned k, unsigned levels) {
  const unsigned steps = levels - 1;
  return (2 * 255 * k + steps) / (2 * steps);
}

template <unsigned levels>
constexpr auto grayLevels() {
  std::array<RGBQUAD, levels> palette{};
  for (unsigned k = 0; k < levels; ++k) palette[k] = gray(level(k, levels));
  return palette;
}

// All combinations of the given numbers of levels, blue varying fastest. Entries beyond them are black.
template <unsigned reds, unsigned greens, unsigned blues, unsigned entries = reds* greens* blues>
constexpr auto colorLevels() {
  std::array<RGBQUAD, entries> palette{};
  unsigned i = 0;
  for (unsigned r = 0; r < reds; ++r) {
    for (unsigned g = 0; g < greens; ++g) {
      for (unsigned b = 0; b < blues; ++b) {
        palette[i++] = color(level(r, reds), level(g, greens), level(b, blues));
      }
    }
  }
  return palette;
}

constexpr auto palette1 = grayLevels<2>();
constexpr auto palette2 = grayLevels<4>();
constexpr auto palette3 = colorLevels<2, 2, 2>();
// The sixteen standard colours. The darker grey comes first, so brightness does not rise throughout.
constexpr std::array<RGBQUAD, 16> palette4 = {
    color(0, 0, 0),       color(128, 0, 0),   color(0, 128, 0),   color(128, 128, 0),
    color(0, 0, 128),     color(128, 0, 128), color(0, 128, 128), color(128, 128, 128),
    color(192, 192, 192), color(255, 0, 0),   color(0, 255, 0),   color(255, 255, 0),
    color(0, 0, 255),     color(255, 0, 255), color(0, 255, 255), color(255, 255, 255),
};
constexpr auto palette5 = colorLevels<4, 4, 2>();
constexpr auto palette6 = colorLevels<4, 4, 4>();
constexpr auto palette7 = colorLevels<4, 8, 4>();
constexpr auto palette8 = colorLevels<8, 8, 4>();
constexpr auto cube = colorLevels<6, 6, 6, 256>();
constexpr auto grayRamp = grayLevels<256>();

constexpr const RGBQUAD* palettes[] = {palette1.data(), palette2.data(), palette3.data(), palette4.data(),
                                       palette5.data(), palette6.data(), palette7.data(), palette8.data()};

constexpr unsigned maxPaletteEntries = 65535;

}  // namespace

const RGBQUAD* fixedPalette(int bitsPerPixel) {
  return bitsPerPixel >= 1 && bitsPerPixel <= 8 ? palettes[bitsPerPixel - 1] : nullptr;
}

const RGBQUAD* cubePalette() {
  return cube.data();
}

}  // namespace zavo

using namespace zavo;

const RGBQUAD* ZAVO_CALL Zv_IntGetFixedPalette(int bitsPerPixel) {
  return fixedPalette(bitsPerPixel);
}

int ZAVO_CALL Zv_GetFixedPalette(RGBQUAD* palette, int bitsPerPixel) {
  const RGBQUAD* source = bitsPerPixel == 0 ? grayRamp.data() : fixedPalette(bitsPerPixel);
  if (palette == nullptr || source == nullptr) return KERR_BAD_PARAMETER;
  std::copy_n(source, bitsPerPixel == 0 ? 256 : 1 << bitsPerPixel, palette);
  return KSUCCESS;
}

HPALETTE ZAVO_CALL Zv_CreateFixedPalette(int bitsPerPixel) {
  const int bits = bitsPerPixel == 0 ? 1 : bitsPerPixel;
  const RGBQUAD* source = fixedPalette(bits);
  return source != nullptr ? createPalette(source, 1u << bits) : nullptr;
}

int ZAVO_CALL Zv_CreateBitmapFixedPalette(BitmapHandle* bitmap) {
  if (bitmap == nullptr) return 0;
  for (int bits = 1; bits <= 8; ++bits) {
    if (bitmap->ColorCount != 1u << bits) continue;
    HPALETTE palette = createPalette(fixedPalette(bits), bitmap->ColorCount);
    if (palette == nullptr) return 0;
    bitmap->Palette = palette;
    return 1;
  }
  return 0;
}

HPALETTE ZAVO_CALL Zv_CreateGrayPalette(int bitsPerPixel) {
  const unsigned bits = bitsPerPixel == 0 ? 8 : static_cast<unsigned>(bitsPerPixel) & 31;
  const unsigned count = 1u << bits;
  if (count > maxPaletteEntries) return nullptr;
  const auto colors = OsBlock<RGBQUAD>::allocate(count);
  if (!colors) return nullptr;
  const unsigned steps = std::max(count - 1, 1u);
  for (unsigned k = 0; k < count; ++k) colors[k] = gray(k * 255 / steps);
  return createPalette(colors.get(), count);
}
