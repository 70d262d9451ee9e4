// Bitmaps turned into 8-bit grey.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>

#include "imgproc/gray_checks.h"
#include "support/progress_log.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

void expectLevels(BitmapHandle& gray, const std::vector<unsigned>& levels) {
  const Picture picture = pictureOf(gray);
  ASSERT_EQ(picture.pixels.size(), levels.size());
  for (size_t i = 0; i < levels.size(); ++i) {
    ASSERT_EQ(picture.pixels[i], levels[i])
        << "at " << i % static_cast<size_t>(gray.Width) << ", " << i / static_cast<size_t>(gray.Width);
  }
}

TEST(GrayScale, PixelsBecomeTheirBrightnessAtEveryDepthAndWidth) {
  std::mt19937 random(620);
  for (const int bits : allDepths) {
    for (const int memoryType : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
      if (bits > 1 && memoryType != ALLOC_MEMORY) continue;
      for (int width = 1; width <= 70; ++width) {
        SCOPED_TRACE(testing::Message() << bits << " bits, width " << width << ", memory type " << memoryType);
        NoiseBitmap bitmap(width, 2, bits, random, memoryType);
        ASSERT_TRUE(bitmap.allocated());
        const std::vector<unsigned> levels = levelsOf(bitmap);
        ASSERT_EQ(Zv_GrayScaleBitmap(&bitmap), KSUCCESS);
        expectLevels(bitmap, levels);
        expectCleanPadding(bitmap);
      }
    }
  }
}

TEST(GrayScale, GreyPalettesGoThroughTheirColours) {
  std::mt19937 random(621);
  // A palette of white, then black.
  TestBitmap inverted(19, 4, 1);
  fillWithNoise(inverted, random);
  setPalette(inverted, {{255, 255, 255, 0}, {0, 0, 0, 0}});
  const Picture bitsBefore = pictureOf(inverted);
  ASSERT_EQ(Zv_GrayScaleBitmap(&inverted), KSUCCESS);
  for (size_t i = 0; i < bitsBefore.pixels.size(); ++i) {
    ASSERT_EQ(pictureOf(inverted).pixels[i], bitsBefore.pixels[i] == 0 ? 255u : 0u);
  }
  // A grey image of 8 bits stays what it is.
  ASSERT_EQ(Zv_GrayScaleBitmap(&inverted), KSUCCESS);
  EXPECT_EQ(pictureOf(inverted).at(0, 0), bitsBefore.at(0, 0) == 0 ? 255u : 0u);
  // Falling greys and the fixed palette, at every depth.
  for (int bits = 1; bits <= 8; ++bits) {
    for (const bool falling : {true, false}) {
      SCOPED_TRACE(testing::Message() << bits << " bits" << (falling ? ", falling greys" : ", fixed palette"));
      TestBitmap bitmap(50, 3, bits);
      fillWithNoise(bitmap, random);
      const int count = 1 << bits;
      Palette greys(static_cast<size_t>(count));
      for (int i = 0; i < count; ++i) {
        const auto level = static_cast<BYTE>(255 - i * 255 / (count - 1));
        greys[static_cast<size_t>(i)] = {level, level, level, 0};
      }
      if (falling) setPalette(bitmap, greys);
      const std::vector<unsigned> levels = levelsOf(bitmap);
      ASSERT_EQ(Zv_GrayScaleBitmap(&bitmap), KSUCCESS);
      expectLevels(bitmap, levels);
      EXPECT_EQ(Zv_IsGrayScaleBitmap(&bitmap), 1) << "a rising ramp";
    }
  }
}

TEST(GrayScale, TheHandleTakesTheNewImageAndKeepsTheRest) {
  std::mt19937 random(622);
  for (const int bits : {1, 5, 24}) {
    for (const int perspective :
         {int{VIEW_UPRIGHT}, int{VIEW_BOTTOM_UP}, int{VIEW_TURNED_90}, int{VIEW_TURNED_270}, 77}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      TestBitmap bitmap(33, 14, bits);
      fillWithNoise(bitmap, random);
      describe(bitmap, perspective);
      const RECT oval = {2, 1, 20, 12};
      ASSERT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &oval, CombineSet), KSUCCESS);
      const RegionExtent region = regionExtentOf(bitmap);
      const BitmapHandle before = bitmap;
      ASSERT_EQ(Zv_GrayScaleBitmap(&bitmap), KSUCCESS);
      expectDescribed(bitmap, before, 8);
      EXPECT_TRUE(regionExtentOf(bitmap) == region);
    }
  }
}

TEST(GrayScale, RefusesBitmapsWithoutTheirColours) {
  EXPECT_EQ(Zv_GrayScaleBitmap(nullptr), KERR_BAD_BITMAP);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_GrayScaleBitmap(&empty), KERR_BAD_BITMAP);

  TestBitmap bitmap(10, 5, 4);
  setPalette(bitmap, Palette(15));
  {
    const Snapshot before(bitmap);
    EXPECT_EQ(Zv_GrayScaleBitmap(&bitmap), KERR_BAD_BITMAP) << "a palette one colour short";
    EXPECT_TRUE(before.unchanged());
  }
  DeleteObject(bitmap.Palette);
  bitmap.Palette = nullptr;
  {
    const Snapshot before(bitmap);
    EXPECT_EQ(Zv_GrayScaleBitmap(&bitmap), KERR_BAD_BITMAP) << "no palette";
    EXPECT_TRUE(before.unchanged());
  }
  bitmap.Palette = Zv_CreateGrayPalette(8);
  EXPECT_EQ(Zv_GrayScaleBitmap(&bitmap), KSUCCESS) << "colours to spare";
}

TEST(GrayScale, ReportsRowsAndCanBeStopped) {
  TestBitmap bitmap(9, 7, 24);
  const Snapshot before(bitmap);
  for (const size_t call : {1, 4, 8}) {
    const ProgressLog log(call, -1234);
    EXPECT_EQ(Zv_GrayScaleBitmap(&bitmap), -1234);
    EXPECT_EQ(log.percents.size(), call);
    EXPECT_TRUE(before.unchanged()) << "stopped at call " << call;
  }
  {
    const ProgressLog log;
    EXPECT_EQ(Zv_GrayScaleBitmap(&bitmap), KSUCCESS);
    EXPECT_EQ(log.percents, (std::vector<int>{0, 14, 28, 42, 57, 71, 85, 100}));
  }
  TestBitmap tall(1, 250, 1);
  const ProgressLog log;
  EXPECT_EQ(Zv_GrayScaleBitmap(&tall), KSUCCESS);
  ASSERT_EQ(log.percents.size(), 101u) << "more rows than percents: a call a percent";
  for (int i = 0; i <= 100; ++i) EXPECT_EQ(log.percents[static_cast<size_t>(i)], i);
}

}  // namespace
