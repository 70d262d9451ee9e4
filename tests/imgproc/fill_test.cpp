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
    for (const int memoryType : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, memory type " << memoryType);
      TestBitmap bitmap(45, 20, bits, memoryType);
      ASSERT_TRUE(bitmap.allocated());
      const unsigned index = (1u << (bits < 8 ? bits : 8)) - 1;
      const COLORREF color = bits <= 8 ? paletteIndex(index) : RGB(255, 0, 255);
      uint32_t pixel = index;
      if (bits == 16) pixel = 0x1F7C;
      if (bits == 24) pixel = 0xFF00FF;
      if (bits == 32) pixel = 0xFF00FF00;

      fillWithNoise(bitmap, random);
      const Picture before = pictureOf(bitmap);
      const RECT box = {3, 4, 30, 15};
      ASSERT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &box, CombineSet), KSUCCESS);
      ASSERT_EQ(Zv_FillBitmap(&bitmap, color), KSUCCESS);
      const Picture through = pictureOf(bitmap);
      for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 45; ++x) {
          const bool inside = Zv_IsPtInBitmapRgn(&bitmap, y, x) == 1;
          ASSERT_EQ(through.at(x, y), inside ? pixel : before.at(x, y)) << "at " << x << ", " << y;
        }
      }

      ASSERT_EQ(Zv_FreeBitmapRgn(&bitmap), KSUCCESS);
      ASSERT_EQ(Zv_FillBitmap(&bitmap, color), KSUCCESS);
      for (const uint32_t filled : pictureOf(bitmap).pixels) ASSERT_EQ(filled, pixel);
      ASSERT_EQ(Zv_ClearBitmap(&bitmap), KSUCCESS);
      for (const uint32_t cleared : pictureOf(bitmap).pixels) ASSERT_EQ(cleared, 0u);
    }
  }
}

TEST(Fill, ColoursTakeTheNearestIndexOfTheSystem) {
  TestBitmap bitmap(9, 3, 4);
  for (const COLORREF color : {RGB(250, 3, 3), RGB(130, 130, 120), RGB(0, 0, 140)}) {
    ASSERT_EQ(Zv_FillBitmap(&bitmap, color), KSUCCESS);
    EXPECT_EQ(pictureOf(bitmap).at(4, 1), GetNearestPaletteIndex(bitmap.Palette, color));
  }
}

TEST(Fill, ReportsBeforeAndAfterAndCanBeRefused) {
  TestBitmap bitmap(9, 30, 8);
  {
    const ProgressLog log;
    ASSERT_EQ(Zv_FillBitmap(&bitmap, paletteIndex(9)), KSUCCESS);
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
