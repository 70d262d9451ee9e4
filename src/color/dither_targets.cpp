// Setting a dither target up, and the searches its table is filled from.
#include "color/dither_targets.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace zavo {
namespace {

// The level codes of the fixed palettes: as many steps as there are from black to white. Where channels differ, the
// coarse ones decide, which band first; the two palettes that painting knows have the codes that painting uses.
constexpr int fixedLevelCodes[] = {0, 0, 1, 3, 1, 2, 3, 3, 4, 8, 6};

// The standard colours are no even levels: each cell of 32 x 32 x 32 colours takes the entry nearest to it, and the
// colours of the palette find themselves.
void fillCells(uint8_t cells[512], const RGBQUAD* palette) {
  const auto widen3 = [](unsigned bits) { return bits << 5 | bits << 2 | bits >> 1; };
  for (unsigned cell = 0; cell < 512; ++cell) {
    const unsigned red = widen3(cell >> 6), green = widen3(cell >> 3 & 7), blue = widen3(cell & 7);
    cells[cell] = static_cast<uint8_t>(nearestIndex(palette, 16, red, green, blue));
  }
}

// The largest difference in a channel.
int distance(const RGBQUAD& a, const RGBQUAD& b) {
  return std::max({std::abs(a.rgbRed - b.rgbRed), std::abs(a.rgbGreen - b.rgbGreen), std::abs(a.rgbBlue - b.rgbBlue)});
}

// The mean distance of an entry to the nearest one that differs; 256 for a single colour.
int meanSpacing(const RGBQUAD* palette, unsigned count) {
  int total = 0;
  for (unsigned i = 0; i < count; ++i) {
    int nearest = 256;
    for (unsigned j = 0; j < count; ++j) {
      const int d = distance(palette[i], palette[j]);
      if (d != 0) nearest = std::min(nearest, d);
    }
    total += nearest;
  }
  return total / static_cast<int>(count);  // NOLINT(clang-analyzer-core.DivideZero): there is no empty palette
}

}  // namespace

uint16_t MatchQuantiser::search(uint32_t color) const {
  return static_cast<uint16_t>(matcher_.search(redOf(color), greenOf(color), blueOf(color)) + 1);
}

void setDitherTarget(DitherTarget& target, int kind, const RGBQUAD* palette, unsigned colorCount) {
  target.kind = kind;
  target.colorCount = colorCount;
  if (kind == cubeKind) {
    palette = cubePalette();
    target.colorCount = cubeColors;
  } else if (kind != noFixedKind) {
    palette = fixedPalette(kind - 1);
    target.colorCount = 1u << (kind - 1);
  }
  memcpy(target.palette, palette, target.colorCount * sizeof(RGBQUAD));
  for (unsigned i = 0; i < target.colorCount; ++i) {
    target.lanes[i][0] = palette[i].rgbBlue;
    target.lanes[i][1] = palette[i].rgbGreen;
    target.lanes[i][2] = palette[i].rgbRed;
  }
  if (kind == fixedKind(4)) fillCells(target.cells, palette);
  if (kind == noFixedKind) target.matcher.prepare(target.palette, target.colorCount, nullptr);
}

int fixedKindOf(const RGBQUAD* palette, unsigned count) {
  int bits = 1;
  while (1u << bits < count) ++bits;
  return memcmp(palette, fixedPalette(bits), count * sizeof(RGBQUAD)) == 0 ? fixedKind(bits) : noFixedKind;
}

bool isGrayTarget(const DitherTarget& target) {
  return std::all_of(target.palette, target.palette + target.colorCount, isGray);
}

int levelCode(const DitherTarget& target) {
  if (target.kind != noFixedKind) return fixedLevelCodes[target.kind];
  const int spacing = meanSpacing(target.palette, target.colorCount);
  return std::clamp((256 + spacing / 2) / spacing, 1, 8);
}

}  // namespace zavo
