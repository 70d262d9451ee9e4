// Dither runs against the slow model.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>
#include <random>

#include "color/dither_model.h"

namespace {

using namespace zavotest;

// Dithers all rows of a bitmap and compares with the model; what lies behind the indexes must stay.
void expectModel(BitmapHandle& source, const Palette& palette, unsigned colors) {
  const std::vector<Color> picture = colorsOf(source);
  const auto bits = static_cast<unsigned>(bitsFor(colors));
  const int kind = palette.empty() ? bitsFor(colors) : fixedBitsOf(palette);
  DitherModel model(source.Width, source.DitheringMethod, palette, kind);
  ASSERT_EQ(Zv_StartDithering(&source, palette.empty() ? nullptr : palette.data(), colors), KSUCCESS);
  std::vector<uint8_t> row(source.BytesPerLine);
  for (int y = 0; y < source.Height; ++y) {
    Zv_GetBitmapRow(&source, row.data(), static_cast<unsigned>(y), source.BytesPerLine);
    std::vector<uint8_t> result(static_cast<size_t>(source.Width) * bits / 8 + 3, 0xA5), packed = result;
    ASSERT_EQ(Zv_DitherLine(&source, row.data(), result.data()), KSUCCESS);
    const auto expected = model.dither(&picture[static_cast<size_t>(y * source.Width)]);
    for (size_t x = 0; x < expected.size(); ++x) writePixel(packed.data(), x, bits, expected[x]);
    ASSERT_EQ(result, packed) << "row " << y;
  }
  EXPECT_EQ(Zv_StopDithering(&source), KSUCCESS);
  EXPECT_EQ(source.DitherState, nullptr);
}

TEST(Dither, EveryMethodDepthAndTargetFollowsTheModel) {
  constexpr unsigned counts[] = {1, 2, 3, 4, 5, 16, 17, 100, 128, 129, 256};
  std::mt19937 random(221);
  unsigned number = 0;
  for (int method = 0; method <= 8; ++method) {
    for (const int depth : allDepths) {
      for (unsigned target = 0; target <= 13; ++target, ++number) {
        SCOPED_TRACE(testing::Message() << "case " << number << ": method " << method << ", " << depth
                                        << " bits, target " << target);
        TestBitmap source(number % 3 == 0 ? number / 3 % 9 + 1 : random() % 131 + 1, 6, depth);
        if (depth <= 8) {
          setPalette(source,
                     random() % 2 == 0 ? grayPalette(source.ColorCount) : noisePalette(source.ColorCount, random));
        }
        if (depth > 8 && random() % 2 == 0) source.ColorOrder = ORDER_RED_FIRST;
        // What stays black lets errors pile up.
        const unsigned choice = random() % 5;
        if (choice == 0) fillWithNoise(source, random);
        if (choice > 1) fillWithPicture(source, random);
        source.DitheringMethod = method;
        // 0 to 7: the fixed palettes; then greys, noise, the beginnings of fixed palettes, and what is not quite one.
        const unsigned colors = target < 8 ? 2u << target : counts[random() % std::size(counts)];
        Palette palette = target < 10 ? grayPalette(colors) : noisePalette(colors, random);
        if (target < 8) palette.clear();
        if (target >= 12) std::copy_n(Zv_IntGetFixedPalette(bitsFor(colors)), colors, palette.begin());
        if (target == 13) palette.back().rgbReserved = 1;
        expectModel(source, palette, colors);
        if (HasFailure()) return;
      }
    }
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
  for (const int depth : {INT_MIN, -1, 0, 9, 12, 25, 33}) {
    bitmap.BitsPerPixel = depth;
    EXPECT_EQ(Zv_StartDithering(&bitmap, nullptr, 2), KERR_BAD_PARAMETER) << depth;
  }
  bitmap.BitsPerPixel = 24;
  EXPECT_EQ(bitmap.DitherState, nullptr);
  EXPECT_EQ(Zv_DitherLine(&bitmap, row, result), KERR_BAD_PARAMETER) << "no run";
  EXPECT_EQ(Zv_StopDithering(&bitmap), KSUCCESS) << "no run";

  ASSERT_EQ(Zv_StartDithering(&bitmap, palette, 2), KSUCCESS);
  EXPECT_EQ(Zv_StartDithering(&bitmap, nullptr, 257), KERR_BAD_PARAMETER);
  EXPECT_EQ(bitmap.DitherState, nullptr) << "closed all the same";
  ASSERT_EQ(Zv_StartDithering(&bitmap, palette, 2), KSUCCESS);
  ASSERT_EQ(Zv_StartDithering(&bitmap, nullptr, 2), KSUCCESS) << "again";
  EXPECT_EQ(Zv_DitherLine(nullptr, row, result), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DitherLine(&bitmap, nullptr, result), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DitherLine(&bitmap, row, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_StopDithering(&bitmap), KSUCCESS);
  EXPECT_EQ(Zv_StopDithering(nullptr), KERR_BAD_PARAMETER);
}

}  // namespace
