// Mirroring rows, flipping and reversing bitmaps.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>

#include "support/progress_log.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

// Pixel `x` of a row as a number, first bit most significant.
uint32_t pixelOf(const std::vector<uint8_t>& row, int x, int bits) {
  uint32_t pixel = 0;
  for (int bit = x * bits; bit < (x + 1) * bits; ++bit) {
    pixel = pixel << 1 | (row[static_cast<size_t>(bit / 8)] >> (7 - bit % 8) & 1);
  }
  return pixel;
}

TEST(MirrorLine, ReversesPixelsAtEveryDepthAndWidth) {
  std::mt19937 random(20);
  for (const int bits : allDepths) {
    for (int width = 1; width <= 130; ++width) {
      SCOPED_TRACE(testing::Message() << bits << " bits, width " << width);
      const auto bytes = static_cast<size_t>((width * bits + 7) / 8);
      std::vector<uint8_t> row(bytes + 4);
      for (uint8_t& byte : row) byte = static_cast<uint8_t>(random());
      const std::vector<uint8_t> before = row;
      ASSERT_EQ(Zv_MirrorLine(row.data(), static_cast<unsigned>(width), bits), KSUCCESS);
      for (int x = 0; x < width; ++x) ASSERT_EQ(pixelOf(row, x, bits), pixelOf(before, width - 1 - x, bits)) << x;
      if (const size_t unused = bytes * 8 - static_cast<size_t>(width * bits); unused != 0) {
        ASSERT_EQ(row[bytes - 1] & ((1 << unused) - 1), 0) << "bits behind the last pixel";
      }
      for (size_t i = bytes; i < row.size(); ++i) ASSERT_EQ(row[i], before[i]) << "byte behind the row";
    }
  }
  EXPECT_EQ(Zv_MirrorLine(nullptr, 8, 8), KERR_BAD_PARAMETER);
}

// Expects that pixel (x, y) of `now` is pixel from(x, y) of `before`.
template <typename From>
void expectMoved(const Picture& now, const Picture& before, From from) {
  for (int y = 0; y < now.height; ++y) {
    for (int x = 0; x < now.width; ++x) {
      const auto [fromX, fromY] = from(x, y);
      ASSERT_EQ(now.at(x, y), before.at(fromX, fromY)) << "at " << x << ", " << y;
    }
  }
}

TEST(Flip, RowsAndColumnsOfTheSeenPictureChangePlaces) {
  std::mt19937 random(21);
  for (const int bits : allDepths) {
    for (const int perspective : {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270}) {
      for (const int memoryType : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
        for (const int height : {1, 2, 7}) {
          SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", height " << height);
          const int width = 37;
          TestBitmap bitmap(width, height, bits, memoryType);
          ASSERT_TRUE(bitmap.allocated());
          bitmap.ViewPerspective = perspective;
          fillWithNoise(bitmap, random);
          const Picture before = pictureOf(bitmap);
          const bool turned = perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;

          ASSERT_EQ(turned ? Zv_ReverseBitmap(&bitmap) : Zv_FlipBitmap(&bitmap), KSUCCESS);
          expectMoved(pictureOf(bitmap), before, [&](int x, int y) { return std::pair(x, height - 1 - y); });
          ASSERT_EQ(turned ? Zv_FlipBitmap(&bitmap) : Zv_ReverseBitmap(&bitmap), KSUCCESS);
          expectMoved(pictureOf(bitmap), before,
                      [&](int x, int y) { return std::pair(width - 1 - x, height - 1 - y); });
        }
      }
    }
  }
}

TEST(Flip, RegionGoesAlong) {
  TestBitmap bitmap(20, 10, 24);
  const RECT corner = {1, 2, 5, 4};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &corner, CombineSet), KSUCCESS);
  ASSERT_EQ(Zv_FlipBitmap(&bitmap), KSUCCESS);
  ASSERT_EQ(Zv_ReverseBitmap(&bitmap), KSUCCESS);
  RECT bounds;
  ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  const RECT expected = {15, 6, 19, 8};
  EXPECT_TRUE(EqualRect(&bounds, &expected));
}

TEST(Flip, ReportsProgressPerPairAndStops) {
  TestBitmap bitmap(5, 9, 24);
  {
    const ProgressLog log;
    ASSERT_EQ(Zv_FlipBitmap(&bitmap), KSUCCESS);
    EXPECT_EQ(log.percents, (std::vector<int>{0, 25, 50, 75, 100}));
  }
  const ProgressLog log(2, -77);
  EXPECT_EQ(Zv_FlipBitmap(&bitmap), -77);
  EXPECT_EQ(log.percents.size(), 2u);
}

TEST(Flip, RefusesWhatHasNoPixels) {
  TestBitmap line(5, 1, 24);
  const ProgressLog log;
  EXPECT_EQ(Zv_FlipBitmap(&line), KSUCCESS) << "a single row has no pairs to divide by";
  BitmapHandle empty{};
  EXPECT_EQ(Zv_FlipBitmap(nullptr), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ReverseBitmap(&empty), KERR_BAD_BITMAP);
}

}  // namespace
