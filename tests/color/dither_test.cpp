// Dither runs against a slow model that spreads errors as the kernels' rows are written down.
#include <zavo.h>

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>
#include <map>
#include <random>

#include "color/colors.h"
#include "color/threshold_screens.h"
#include "support/refusals.h"

namespace {

using namespace zavotest;

struct ModelKernel {
  int divisor;
  int weights[4][7];  // this row and the three below, x - 3 .. x + 3
};

constexpr ModelKernel modelKernels[] = {
    {16, {{0, 0, 0, 0, 7, 0, 0}, {0, 0, 3, 5, 1, 0, 0}}},
    {42, {{0, 0, 0, 0, 8, 4, 0}, {0, 2, 4, 8, 4, 2, 0}, {0, 1, 2, 4, 2, 1, 0}}},
    {32, {{0, 0, 0, 0, 8, 4, 0}, {0, 2, 4, 8, 4, 2, 0}}},
    {32, {{0, 0, 0, 0, 5, 3, 0}, {0, 2, 4, 5, 4, 2, 0}, {0, 0, 2, 3, 2, 0, 0}}},
    {200, {{0, 0, 0, 0, 0, 32, 0}, {12, 0, 26, 0, 30, 0, 16}, {0, 12, 0, 26, 0, 12, 0}, {5, 0, 12, 0, 12, 0, 5}}},
    {48, {{0, 0, 0, 0, 7, 5, 0}, {0, 3, 5, 7, 5, 3, 0}, {0, 1, 3, 5, 3, 1, 0}}},
};

// Steps of ordered dithering from black to white, by bits of the fixed palette.
constexpr int fixedLevelCodes[] = {0, 1, 3, 1, 2, 3, 3, 4, 8};

int bitsFor(size_t colors) {
  int bits = 1;
  while (1u << bits < colors) ++bits;
  return bits;
}

bool sameEntries(const Palette& palette, const RGBQUAD* fixed) {
  return std::equal(palette.begin(), palette.end(), fixed, [](const RGBQUAD& a, const RGBQUAD& b) {
    return colorOf(a) == colorOf(b) && a.rgbReserved == b.rgbReserved;
  });
}

class Model {
 public:
  Model(int width, int method, const Palette& palette, size_t colors)
      : width_(width), method_(method), palette_(palette), bits_(bitsFor(colors)) {
    const RGBQUAD* fixed = Zv_IntGetFixedPalette(bits_);
    fixed_ = palette.empty() || sameEntries(palette, fixed);
    if (fixed_) palette_.assign(fixed, fixed + (1 << bits_));
    levelCode_ = levelCode();
    for (auto& row : carried_) row.resize(static_cast<size_t>(width));
  }

  std::vector<unsigned> dither(const std::vector<Color>& row) {
    std::vector<unsigned> indexes;
    for (int x = 0; x < width_; ++x) {
      const Color& color = row[static_cast<size_t>(x)];
      const int channels[] = {static_cast<int>(color.red), static_cast<int>(color.green), static_cast<int>(color.blue)};
      int value[3];
      for (int c = 0; c < 3; ++c) value[c] = std::clamp(channels[c] + added(x, c), 0, 255);
      const unsigned index =
          indexOf({static_cast<unsigned>(value[0]), static_cast<unsigned>(value[1]), static_cast<unsigned>(value[2])});
      const RGBQUAD& entry = palette_[index];
      const int chosen[] = {entry.rgbRed, entry.rgbGreen, entry.rgbBlue};
      for (int c = 0; c < 3; ++c) spread(x, c, value[c] - chosen[c]);
      indexes.push_back(index);
    }
    for (int r = 0; r < 3; ++r) carried_[r] = carried_[r + 1];
    carried_[3].assign(static_cast<size_t>(width_), {});
    ++row_;
    return indexes;
  }

 private:
  [[nodiscard]] bool diffuses() const { return method_ >= 1 && method_ <= 6; }

  int added(int x, int channel) {
    if (diffuses()) return carried_[0][static_cast<size_t>(x)].sum[channel] / modelKernels[method_ - 1].divisor;
    if (method_ != 7 && method_ != 8) return 0;
    return static_cast<int>(screens[8 - method_][row_ % 8][x % 8]) / levelCode_ - 128 / levelCode_;
  }

  void spread(int x, int channel, int error) {
    if (!diffuses()) return;
    for (int r = 0; r < 4; ++r) {
      for (int dx = -3; dx <= 3; ++dx) {
        if (x + dx < 0 || x + dx >= width_) continue;
        carried_[r][static_cast<size_t>(x + dx)].sum[channel] += error * modelKernels[method_ - 1].weights[r][dx + 3];
      }
    }
  }

  // The steps between black and white that the palette's colours are apart on average.
  int levelCode() const {
    if (fixed_) return fixedLevelCodes[bits_];
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

  unsigned indexOf(const Color& c) {
    const auto search = [&](const Color& wanted) {
      return Zv_FindPaletteIndex(palette_.data(), static_cast<unsigned>(palette_.size()), wanted.red, wanted.green,
                                 wanted.blue);
    };
    if (!fixed_) {
      const unsigned key = c.red / 8 * 1024 + c.green / 8 * 32 + c.blue / 8;
      if (known_.count(key) == 0) known_[key] = search(c);
      return known_[key];
    }
    switch (bits_) {
      case 1:
        return brightness(c) / 128;
      case 2:
        return brightness(c) / 64;
      case 3:
        return c.red / 128 * 4 + c.green / 128 * 2 + c.blue / 128;
      case 4: {
        const auto cell = [](unsigned v) { return v / 32 * 32 + v / 32 * 4 + v / 64; };
        return search({cell(c.red), cell(c.green), cell(c.blue)});
      }
      case 5:
        return c.red / 64 * 8 + c.green / 64 * 2 + c.blue / 128;
      case 6:
        return c.red / 64 * 16 + c.green / 64 * 4 + c.blue / 64;
      case 7:
        return c.red / 64 * 32 + c.green / 32 * 4 + c.blue / 64;
      default:
        return c.red / 32 * 32 + c.green / 32 * 4 + c.blue / 64;
    }
  }

  struct Sums {
    int sum[3] = {};
  };

  int width_, method_;
  Palette palette_;
  int bits_;
  bool fixed_ = false;
  int levelCode_ = 0;
  int row_ = 0;
  std::vector<Sums> carried_[4];  // to this row and the three below
  std::map<unsigned, unsigned> known_;
};

// Dithers all rows of a bitmap and compares with the model; what lies behind the indexes must stay.
void expectModel(BitmapHandle& source, const Palette& palette, unsigned colors) {
  const std::vector<Color> picture = colorsOf(source);
  const int bits = bitsFor(colors);
  const auto width = static_cast<size_t>(source.Width);
  Model model(source.Width, source.DitheringMethod, palette, colors);
  ASSERT_EQ(Zv_StartDithering(&source, palette.empty() ? nullptr : palette.data(), colors), KSUCCESS);
  std::vector<uint8_t> row(source.BytesPerLine), result(width * static_cast<size_t>(bits) / 8 + 3);
  for (int y = 0; y < source.Height; ++y) {
    Zv_GetBitmapRow(&source, row.data(), static_cast<unsigned>(y), source.BytesPerLine);
    std::fill(result.begin(), result.end(), uint8_t{0xA5});
    ASSERT_EQ(Zv_DitherLine(&source, row.data(), result.data()), KSUCCESS);
    const auto first = picture.begin() + y * source.Width;
    const auto expected = model.dither({first, first + source.Width});

    std::vector<uint8_t> packed(result.size(), 0xA5);
    for (size_t bit = 0; bit < width * static_cast<size_t>(bits); ++bit) {
      const unsigned on = expected[bit / static_cast<size_t>(bits)] >> (bits - 1 - static_cast<int>(bit) % bits) & 1;
      const unsigned mask = 0x80u >> bit % 8;
      packed[bit / 8] = static_cast<uint8_t>((packed[bit / 8] & ~mask) | (on != 0 ? mask : 0));
    }
    ASSERT_EQ(result, packed) << "row " << y;
  }
  EXPECT_EQ(Zv_StopDithering(&source), KSUCCESS);
  EXPECT_EQ(source.DitherState, nullptr);
}

TEST(Dither, EveryMethodDepthAndTargetFollowsTheModel) {
  std::mt19937 random(221);
  int round = 0;
  for (int method = 0; method <= 8; ++method) {
    for (const int depth : allDepths) {
      for (int target = 0; target <= 10; ++target, ++round) {
        SCOPED_TRACE(testing::Message() << "case " << round << ": method " << method << ", " << depth
                                        << " bits, target " << target);
        const int width = round % 3 == 0 ? 1 + round / 3 % 9 : 10 + static_cast<int>(random() % 70);
        TestBitmap source(width, 6, depth);
        ASSERT_TRUE(source.allocated());
        if (depth <= 8) {
          setPalette(source,
                     random() % 3 == 0 ? grayPalette(source.ColorCount) : noisePalette(source.ColorCount, random));
        }
        if (depth > 8 && random() % 2 == 0) source.ColorOrder = ORDER_RED_FIRST;
        if (random() % 4 == 0) {
          fillWithNoise(source, random);
        } else {
          fillWithPicture(source, random);
        }
        source.DitheringMethod = method;
        // 0 to 7: the fixed palettes; then grey and other palettes.
        unsigned colors = target < 8 ? 2u << target : 1 + static_cast<unsigned>(random() % 256);
        Palette palette;
        if (target == 8) palette = grayPalette(colors);
        if (target > 8) palette = noisePalette(colors, random);
        expectModel(source, palette, colors);
        if (HasFailure()) return;
      }
    }
  }
}

// With grey on both sides one channel is enough; it must show no difference.
TEST(Dither, GrayFollowsTheModel) {
  std::mt19937 random(222);
  int round = 0;
  for (int method = 0; method <= 8; ++method) {
    for (const unsigned colors : {1u, 2u, 3u, 4u, 5u, 16u, 100u, 256u}) {
      for (const int depth : {1, 4, 8}) {
        SCOPED_TRACE(testing::Message() << "case " << round << ": method " << method << ", " << depth << " bits, "
                                        << colors << " greys");
        TestBitmap source(1 + round++ * 7 % 131, 9, depth);
        ASSERT_TRUE(source.allocated());
        setPalette(source, grayPalette(source.ColorCount));
        fillWithNoise(source, random);
        source.DitheringMethod = method;
        expectModel(source, colors % 3 == 2 && colors < 5 ? Palette() : grayPalette(colors), colors);
        if (HasFailure()) return;
      }
    }
  }
}

// A colour that the fixed palette holds is that entry.
TEST(Dither, FixedPalettesFindTheirOwnColors) {
  for (int bits = 1; bits <= 8; ++bits) {
    SCOPED_TRACE(bits);
    TestBitmap source(1 << bits, 1, bits);
    ASSERT_TRUE(source.allocated());
    source.DitheringMethod = 0;
    ASSERT_EQ(Zv_StartDithering(&source, nullptr, 1u << bits), KSUCCESS);
    std::vector<uint8_t> indexes(source.BytesPerLine), result(source.BytesPerLine);
    for (unsigned bit = 0; bit < static_cast<unsigned>(bits) << bits; ++bit) {
      const unsigned on = bit / static_cast<unsigned>(bits) >> (bits - 1 - static_cast<int>(bit) % bits) & 1;
      indexes[bit / 8] = static_cast<uint8_t>(indexes[bit / 8] | on << (7 - bit % 8));
    }
    ASSERT_EQ(Zv_DitherLine(&source, indexes.data(), result.data()), KSUCCESS);
    EXPECT_EQ(result, indexes);
    Zv_StopDithering(&source);
  }
}

TEST(Dither, RefusesBadArguments) {
  BitmapHandle bitmap;
  Zv_InitBitmap(&bitmap, 8, 8, 24);
  const RGBQUAD palette[2] = {};
  uint8_t row[32] = {}, result[32];
  EXPECT_EQ(Zv_StartDithering(nullptr, palette, 2), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_StartDithering(&bitmap, nullptr, 0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_StartDithering(&bitmap, nullptr, 257), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DitherLine(&bitmap, row, result), KERR_BAD_PARAMETER) << "no run";
  EXPECT_EQ(Zv_StopDithering(&bitmap), KSUCCESS) << "no run";

  bitmap.BitsPerPixel = 12;
  EXPECT_EQ(Zv_StartDithering(&bitmap, nullptr, 2), KERR_BAD_PARAMETER);
  EXPECT_EQ(bitmap.DitherState, nullptr);
  bitmap.BitsPerPixel = 24;

  ASSERT_EQ(Zv_StartDithering(&bitmap, palette, 2), KSUCCESS);
  ASSERT_EQ(Zv_StartDithering(&bitmap, nullptr, 2), KSUCCESS) << "again";
  EXPECT_EQ(Zv_DitherLine(nullptr, row, result), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DitherLine(&bitmap, nullptr, result), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DitherLine(&bitmap, row, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DitherLine(&bitmap, row, result), KSUCCESS);
  EXPECT_EQ(Zv_StopDithering(&bitmap), KSUCCESS);
  EXPECT_EQ(Zv_StopDithering(nullptr), KERR_BAD_PARAMETER);
}

TEST(Dither, LeavesNoRunWhenRefused) {
  std::mt19937 random(224);
  const Palette palette = noisePalette(200, random);
  for (const int method : {5, 7}) {
    refuseEachResource({.leastPoints = 3}, [&](RefusalRound& round) {
      BitmapHandle bitmap;
      Zv_InitBitmap(&bitmap, 100, 1, 24);
      bitmap.DitheringMethod = method;
      if (round.run([&] { return Zv_StartDithering(&bitmap, palette.data(), 200); }) < 0) {
        EXPECT_EQ(bitmap.DitherState, nullptr);
      }
      Zv_StopDithering(&bitmap);
    });
  }
}

TEST(Dither, FixedPalettesNeedNoMatchTable) {
  BitmapHandle bitmap;
  Zv_InitBitmap(&bitmap, 100, 1, 24);
  Palette palette(Zv_IntGetFixedPalette(4), Zv_IntGetFixedPalette(4) + 16);
  unsigned blocks[2];
  for (unsigned& taken : blocks) {
    const CallCount calls("GlobalAlloc");
    ASSERT_EQ(Zv_StartDithering(&bitmap, palette.data(), 16), KSUCCESS);
    taken = calls.get();
    Zv_StopDithering(&bitmap);
    palette[15].rgbReserved = 1;  // no longer that palette, byte for byte
  }
  EXPECT_EQ(blocks[1], blocks[0] + 1);
}

// The fewest bits that hold the colours.
TEST(Dither, DestinationDepthFollowsTheColors) {
  BitmapHandle bitmap;
  Zv_InitBitmap(&bitmap, 8, 1, 24);
  std::mt19937 random(223);
  const uint8_t row[24] = {};
  const struct {
    unsigned colors, bytes;  // of eight pixels
  } cases[] = {{1, 1}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {16, 4}, {17, 5}, {128, 7}, {129, 8}, {256, 8}};
  for (const auto& c : cases) {
    const Palette palette = noisePalette(c.colors, random);
    ASSERT_EQ(Zv_StartDithering(&bitmap, palette.data(), c.colors), KSUCCESS);
    std::vector<uint8_t> first(10, 0x00), second(10, 0xFF);
    Zv_DitherLine(&bitmap, row, first.data());
    Zv_StopDithering(&bitmap);
    bitmap.DitheringMethod = 0;
    Zv_StartDithering(&bitmap, palette.data(), c.colors);
    Zv_DitherLine(&bitmap, row, second.data());
    Zv_StopDithering(&bitmap);
    for (size_t i = c.bytes; i < 10; ++i) EXPECT_TRUE(first[i] == 0x00 && second[i] == 0xFF) << c.colors << ": " << i;
  }
}

}  // namespace
