// Dithering the slow way: errors spread as the kernels' rows are written down.
#pragma once

#include <algorithm>
#include <map>
#include <vector>

#include "color/colors.h"
#include "color/threshold_screens.h"

namespace zavotest {

struct DitherKernel {
  int divisor;
  int weights[4][7];  // this row and the three below, x - 3 .. x + 3
};

constexpr DitherKernel ditherKernels[] = {
    {16, {{0, 0, 0, 0, 7, 0, 0}, {0, 0, 3, 5, 1, 0, 0}}},
    {42, {{0, 0, 0, 0, 8, 4, 0}, {0, 2, 4, 8, 4, 2, 0}, {0, 1, 2, 4, 2, 1, 0}}},
    {32, {{0, 0, 0, 0, 8, 4, 0}, {0, 2, 4, 8, 4, 2, 0}}},
    {32, {{0, 0, 0, 0, 5, 3, 0}, {0, 2, 4, 5, 4, 2, 0}, {0, 0, 2, 3, 2, 0, 0}}},
    {200, {{0, 0, 0, 0, 0, 32, 0}, {12, 0, 26, 0, 30, 0, 16}, {0, 12, 0, 26, 0, 12, 0}, {5, 0, 12, 0, 12, 0, 5}}},
    {48, {{0, 0, 0, 0, 7, 5, 0}, {0, 3, 5, 7, 5, 3, 0}, {0, 1, 3, 5, 3, 1, 0}}},
};

// Which palettes are indexed by arithmetic: none, the fixed ones by their bits, the cube of six levels.
constexpr int searched = 0;
constexpr int cube = 9;
// Steps of ordered dithering from black to white in these.
constexpr int fixedLevelCodes[] = {0, 1, 3, 1, 2, 3, 3, 4, 8, 6};
// Bits of red, green and blue in those of even levels.
constexpr int channelBits[][3] = {{}, {}, {}, {1, 1, 1}, {}, {2, 2, 1}, {2, 2, 2}, {2, 3, 2}, {3, 3, 2}};

inline int bitsFor(size_t colors) {
  int bits = 1;
  while (1u << bits < colors) ++bits;
  return bits;
}

// The bits of the fixed palette that begins like this one, every byte of it; or `searched`.
inline int fixedBitsOf(const Palette& palette) {
  const int bits = bitsFor(palette.size());
  return memcmp(palette.data(), Zv_IntGetFixedPalette(bits), palette.size() * sizeof(RGBQUAD)) == 0 ? bits : searched;
}

class DitherModel {
 public:
  DitherModel(int width, int method, const Palette& palette, int kind)
      : width_(width), method_(method), palette_(palette), kind_(kind) {
    if (kind != searched && kind != cube) {
      palette_.assign(Zv_IntGetFixedPalette(kind), Zv_IntGetFixedPalette(kind) + (1 << kind));
    }
    levelCode_ = kind == searched ? searchedLevelCode() : fixedLevelCodes[kind];
    for (auto& row : carried_) row.resize(static_cast<size_t>(width));
  }

  std::vector<unsigned> dither(const Color* row) {
    std::vector<unsigned> indexes;
    for (int x = 0; x < width_; ++x) {
      const unsigned channels[] = {row[x].red, row[x].green, row[x].blue};
      unsigned value[3];
      for (int c = 0; c < 3; ++c) {
        value[c] = static_cast<unsigned>(std::clamp(static_cast<int>(channels[c]) + added(x, c), 0, 255));
      }
      indexes.push_back(indexOf({value[0], value[1], value[2]}));
      const Color chosen = colorOf(palette_[indexes.back()]);
      spread(x, 0, static_cast<int>(value[0] - chosen.red));
      spread(x, 1, static_cast<int>(value[1] - chosen.green));
      spread(x, 2, static_cast<int>(value[2] - chosen.blue));
    }
    for (int r = 0; r < 3; ++r) carried_[r] = carried_[r + 1];
    carried_[3].assign(static_cast<size_t>(width_), {});
    ++row_;
    return indexes;
  }

 private:
  [[nodiscard]] bool diffuses() const { return method_ >= 1 && method_ <= 6; }

  int added(int x, int channel) {
    if (diffuses()) return carried_[0][static_cast<size_t>(x)].sum[channel] / ditherKernels[method_ - 1].divisor;
    if (method_ != 7 && method_ != 8) return 0;
    return static_cast<int>(screens[8 - method_][row_ % 8][x % 8]) / levelCode_ - 128 / levelCode_;
  }

  void spread(int x, int channel, int error) {
    if (!diffuses()) return;
    for (int r = 0; r < 4; ++r) {
      for (int dx = -3; dx <= 3; ++dx) {
        if (x + dx < 0 || x + dx >= width_) continue;
        carried_[r][static_cast<size_t>(x + dx)].sum[channel] += error * ditherKernels[method_ - 1].weights[r][dx + 3];
      }
    }
  }

  // The steps between black and white that the palette's colours are apart on average.
  [[nodiscard]] int searchedLevelCode() const {
    int total = 0;
    for (const RGBQUAD& a : palette_) {
      int nearest = 256;
      for (const RGBQUAD& b : palette_) {
        const int d = std::max(
            {std::abs(a.rgbRed - b.rgbRed), std::abs(a.rgbGreen - b.rgbGreen), std::abs(a.rgbBlue - b.rgbBlue)});
        if (d > 0) nearest = std::min(nearest, d);
      }
      total += nearest;
    }
    const int spacing = total / static_cast<int>(palette_.size());
    return std::clamp((256 + spacing / 2) / spacing, 1, 8);
  }

  [[nodiscard]] unsigned search(unsigned red, unsigned green, unsigned blue) const {
    return Zv_FindPaletteIndex(palette_.data(), static_cast<unsigned>(palette_.size()), red, green, blue);
  }

  unsigned indexOf(const Color& c) {
    if (kind_ == searched) {
      const auto [known, isNew] = known_.try_emplace(c.red / 8 << 10 | c.green / 8 << 5 | c.blue / 8);
      if (isNew) known->second = search(c.red, c.green, c.blue);
      return known->second;
    }
    if (kind_ <= 2) return brightness(c) >> (8 - kind_);
    if (kind_ == 4) {
      const auto cell = [](unsigned v) { return v / 32 * 32 + v / 32 * 4 + v / 64; };
      return search(cell(c.red), cell(c.green), cell(c.blue));
    }
    if (kind_ == cube) return c.red / 51 * 36 + c.green / 51 * 6 + c.blue / 51;
    const auto [red, green, blue] = channelBits[kind_];
    return c.red >> (8 - red) << (green + blue) | c.green >> (8 - green) << blue | c.blue >> (8 - blue);
  }

  struct Sums {
    int sum[3] = {};
  };

  int width_, method_;
  Palette palette_;
  int kind_;
  int levelCode_ = 0;
  int row_ = 0;
  std::vector<Sums> carried_[4];  // to this row and the three below
  std::map<unsigned, unsigned> known_;
};

}  // namespace zavotest
