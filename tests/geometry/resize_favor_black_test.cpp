// Shrinking black and white images with thin strokes kept.
#include <zavo.h>

#include <cmath>
#include <gtest/gtest.h>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

// Bit 0 of the picture is black when `blackBit` is 0. Rows are counted from the top of what is seen.
Picture model(const Picture& source, int width, int height, uint32_t blackBit, bool bottomUp) {
  const int boxWidth = std::max(1, source.width / width);
  const int boxHeight = std::max(1, source.height / height);
  int threshold = static_cast<int>(std::sqrt(static_cast<double>(boxWidth * boxHeight)));
  if (threshold < 5) --threshold;
  threshold = std::max(threshold, 1);
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      int black = 0;
      for (int j = 0; j < boxHeight; ++j) {
        for (int i = 0; i < boxWidth; ++i) {
          const int row = y * source.height / height + j;
          const int column = static_cast<int>(int64_t{x} * source.width / width) + i;
          black += source.at(column, bottomUp ? source.height - 1 - row : row) == blackBit ? 1 : 0;
        }
      }
      result.at(x, bottomUp ? height - 1 - y : y) = black >= threshold ? blackBit : 1 - blackBit;
    }
  }
  return result;
}

// Random pixels that are black with a chance of 1 / `scarcity`.
void scatter(BitmapHandle& bitmap, uint32_t blackBit, unsigned scarcity, std::mt19937& random) {
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  for (int y = 0; y < bitmap.Height; ++y) {
    for (auto& byte : row) byte = 0;
    for (int x = 0; x < bitmap.Width; ++x) {
      const bool black = random() % scarcity == 0;
      if (black == (blackBit == 1)) row[static_cast<size_t>(x / 8)] |= static_cast<uint8_t>(0x80 >> x % 8);
    }
    Zv_PutBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
  }
}

TEST(FavorBlack, CountsTheBlackOfEveryBox) {
  std::mt19937 random(51);
  for (int trial = 0; trial < 400; ++trial) {
    // Some rows are wider than a run can say.
    const bool wide = trial % 100 == 0;
    const int from[] = {wide ? 140000 : static_cast<int>(random() % 200 + 1), static_cast<int>(random() % 60 + 1)};
    const int to[] = {trial % 4 == 0 ? static_cast<int>(random() % 300 + 1) : static_cast<int>(random() % 40 + 1),
                      static_cast<int>(random() % 20 + 1)};
    const uint32_t blackBit = random() % 2;
    const bool bottomUp = random() % 2 == 0;
    SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << from[0] << " x " << from[1] << " to " << to[0]
                                    << " x " << to[1] << ", black " << blackBit << ", bottom up " << bottomUp);
    TestBitmap bitmap(from[0], wide ? 2 : from[1], 1,
                      random() % 2 == 0 ? int{ALLOC_MEMORY} : ALLOC_MEMORY | ALLOC_RUNLENGTH);
    ASSERT_TRUE(bitmap.allocated());
    const auto first = static_cast<BYTE>(blackBit == 0 ? 0 : 255), second = static_cast<BYTE>(255 - first);
    const RGBQUAD colors[2] = {{first, first, first, 0}, {second, second, second, 0}};
    ASSERT_EQ(Zv_PutBitmapColors(&bitmap, 0, 2, colors), KSUCCESS);
    bitmap.ViewPerspective = bottomUp ? VIEW_BOTTOM_UP : VIEW_UPRIGHT;
    scatter(bitmap, blackBit, wide ? 70000 : random() % 12 + 1, random);
    const Picture before = pictureOf(bitmap);
    // Favouring black goes before resampling.
    const unsigned flags = random() % 2 == 0 ? SIZE_FAVOR_BLACK : SIZE_FAVOR_BLACK | SIZE_RESAMPLE;
    ASSERT_EQ(Zv_SizeBitmap(&bitmap, to[0], to[1], flags), KSUCCESS);
    if (from[0] == to[0] && from[1] == to[1]) continue;
    ASSERT_TRUE(pictureOf(bitmap) == model(before, to[0], to[1], blackBit, bottomUp));
  }
}

}  // namespace
