// Filling and clearing bitmaps, whole and through regions.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>

#include "support/progress_log.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr COLORREF paletteIndex(unsigned index) {
  return 0x01000000 | index;
}

TEST(Fill, EveryDepthThroughTheRegionAndWhole) {
  std::mt19937 random(60);
  for (const int bits : allDepths) {
    for (int width = 1; width <= 45; ++width) {
      SCOPED_TRACE(testing::Message() << bits << " bits, width " << width);
      TestBitmap bitmap(width, 20, bits);
      fillWithNoise(bitmap, random);
      const uint32_t pixel = bits == 32 ? 0xFF00FF00 : bits == 24 ? 0xFF00FF : bits == 16 ? 0x1F7C : (1u << bits) - 1;
      const COLORREF color = bits <= 8 ? paletteIndex(pixel) : RGB(255, 0, 255);
      const RECT box = {3, 4, 30, 15};
      for (const bool whole : {false, true}) {
        if (!whole) Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &box, CombineSet);
        Picture expected = pictureOf(bitmap);
        for (int y = 0; y < 20; ++y) {
          for (int x = 0; x < width; ++x) {
            if (whole || Zv_IsPtInBitmapRgn(&bitmap, y, x) == 1) expected.at(x, y) = pixel;
          }
        }
        ASSERT_EQ(Zv_FillBitmap(&bitmap, color), KSUCCESS);
        ASSERT_EQ(pictureOf(bitmap), expected);
        Zv_FreeBitmapRgn(&bitmap);
      }
      ASSERT_EQ(Zv_ClearBitmap(&bitmap), KSUCCESS);
      ASSERT_EQ(pictureOf(bitmap), Picture(width, 20));
    }
  }
}

TEST(Fill, ReportsBeforeAndAfterAndCanBeRefused) {
  TestBitmap bitmap(9, 30, 4);
  // Colours take the nearest index of the system.
  for (const COLORREF color : {RGB(250, 3, 3), RGB(130, 130, 120), RGB(0, 0, 140)}) {
    const ProgressLog log;
    ASSERT_EQ(Zv_FillBitmap(&bitmap, color), KSUCCESS);
    EXPECT_EQ(pictureOf(bitmap).at(4, 1), GetNearestPaletteIndex(bitmap.Palette, color));
    EXPECT_EQ(log.percents, (std::vector<int>{0, 100}));
  }
  const Snapshot before(bitmap);
  const ProgressLog log(1, 0);
  EXPECT_EQ(Zv_FillBitmap(&bitmap, paletteIndex(1)), 0);
  EXPECT_TRUE(before.unchanged());
  BitmapHandle empty{};
  EXPECT_EQ(Zv_FillBitmap(nullptr, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ClearBitmap(&empty), KERR_BAD_BITMAP);
}

}  // namespace
