// Bitmaps turned into 8-bit grey, and into black and white by straight and turned screens.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>

#include "color/colors.h"
#include "color/description.h"
#include "color/threshold_screens.h"
#include "support/progress_log.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

// What a bitmap is turned into: grey, or halftones of a type.
constexpr int grey = -1;
constexpr int targets[] = {grey, HALFTONE_CLUSTERED, HALFTONE_DISPERSED};

// Which cell of the screen lies under a coordinate in units of 1 / 16384 pixel, however large.
size_t cellAt(int64_t position) {
  return static_cast<size_t>((position >> 14) & 7);
}

// The threshold at a pixel: that of the cell at its coordinates turned by minus the angle.
unsigned thresholdAt(int type, int angle, int x, int y) {
  const int turn = static_cast<int>((-int64_t{angle} % 36000 + 36000) % 36000);
  const int64_t sine = Zv_SinValue(turn);
  const int64_t cosine = Zv_SinValue((turn + 9000) % 36000);
  return screens[type][cellAt(x * sine + y * cosine)][cellAt(x * cosine - y * sine)];
}

int convert(BitmapHandle* bitmap, int target, int angle) {
  if (target == grey) return Zv_GrayScaleBitmap(bitmap);
  return angle == 0 ? Zv_HalfToneBitmap(bitmap, target) : Zv_HalfToneBitmapExt(bitmap, target, angle);
}

// Converts the bitmap and expects every pixel to be its brightness, or whether that is above the threshold.
void expectConverted(BitmapHandle& bitmap, int target, int angle) {
  const std::vector<Color> colors = colorsOf(bitmap);
  ASSERT_EQ(convert(&bitmap, target, angle), KSUCCESS);
  ASSERT_EQ(bitmap.BitsPerPixel, target == grey ? 8 : 1);
  EXPECT_EQ(Zv_IsGrayScaleBitmap(&bitmap), 1) << "a rising ramp";
  const Picture picture = pictureOf(bitmap);
  ASSERT_EQ(picture.pixels.size(), colors.size());
  size_t i = 0;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x, ++i) {
      const unsigned level = brightness(colors[i]);
      const unsigned expected = target == grey ? level : level > thresholdAt(target, angle, x, y) ? 1 : 0;
      ASSERT_EQ(picture.pixels[i], expected) << "at " << x << ", " << y;
    }
  }
  EXPECT_TRUE(paddingIsZero(bitmap));
}

// A bitmap of noise whose colours are of noise, the fixed ones, or rising or falling greys.
struct NoiseBitmap : TestBitmap {
  NoiseBitmap(int width, int height, int bits, std::mt19937& random) : TestBitmap(width, height, bits) {
    fillWithNoise(*this, random);
    const auto choice = random() % 4;
    std::vector<RGBQUAD> greys = grayPalette(ColorCount);
    if (choice == 0) std::reverse(greys.begin(), greys.end());
    if (bits <= 8 && choice < 2) setPalette(*this, greys);
    if (bits <= 8 && choice == 2) giveRandomPalette(*this, random);
    if (bits >= 16) ColorOrder = choice < 2 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
  }
};

TEST(Gray, EveryDepthWidthAndAngle) {
  std::mt19937 random(620);
  const int angles[] = {1,     1500, 4500,  7500,   8999,    9000,    9001,    18000,   27000,
                        35999, -1,   -4500, 123456, -987654, INT_MAX, INT_MIN, 5036000, 20000};
  unsigned number = 0;
  for (const int bits : allDepths) {
    for (const int target : targets) {
      for (int width = 1; width <= 70; ++width) {
        SIZE size = {width, width % 20 + 1};
        // Positions on the screen pass 32 bits after 131072 pixels.
        if (++number % 301 == 0) size = number % 2 == 0 ? SIZE{300000, 2} : SIZE{2, 300000};
        const unsigned choice = random() % 60;
        int angle = choice < std::size(angles) ? angles[choice] : static_cast<int>(random() % 80000) - 40000;
        if (target == grey || choice > 40) angle = 0;
        SCOPED_TRACE(testing::Message() << bits << " bits, target " << target << ", size " << size.cx << " x "
                                        << size.cy << ", angle " << angle);
        NoiseBitmap bitmap(size.cx, size.cy, bits, random);
        ASSERT_NO_FATAL_FAILURE(expectConverted(bitmap, target, angle));
      }
    }
  }
}

TEST(Gray, TheHandleTakesTheNewImageAndKeepsTheRest) {
  for (const int target : targets) {
    for (const int bits : {1, 5, 24}) {
      for (const int perspective : {+VIEW_UPRIGHT, +VIEW_BOTTOM_UP, +VIEW_TURNED_90, +VIEW_TURNED_270, 77}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, target " << target << ", perspective " << perspective);
        TestBitmap bitmap(33, 14, bits);
        describe(bitmap, perspective);
        const RECT oval = {2, 1, 20, 12};
        ASSERT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &oval, CombineSet), KSUCCESS);
        const RegionExtent region = regionExtentOf(bitmap);
        const BitmapHandle before = bitmap;
        expectConverted(bitmap, target, 0);
        expectDescribed(bitmap, before, target == grey ? 8 : 1);
        EXPECT_EQ(bitmap.Region, before.Region) << "the region itself moves";
        EXPECT_TRUE(regionExtentOf(bitmap) == region);
      }
    }
  }
}

TEST(Gray, RefusesAndStopsWithoutATrace) {
  BitmapHandle empty{};
  EXPECT_EQ(Zv_HalfToneBitmap(nullptr, 7), KERR_BAD_BITMAP) << "before the type";
  for (const int target : targets) {
    EXPECT_EQ(convert(nullptr, target, 100), KERR_BAD_BITMAP);
    EXPECT_EQ(convert(&empty, target, 0), KERR_BAD_BITMAP);
    TestBitmap bitmap(9, 4, 4);
    for (const size_t colors : {0, 15}) {
      setPalette(bitmap, Palette(colors));
      const Snapshot before(bitmap);
      for (const int type : {-1, 2, INT_MAX}) {
        EXPECT_EQ(Zv_HalfToneBitmap(&bitmap, type), KERR_BAD_PARAMETER) << "before the palette";
        EXPECT_EQ(Zv_HalfToneBitmapExt(&bitmap, type, 100), KERR_BAD_PARAMETER);
      }
      EXPECT_EQ(convert(&bitmap, target, 0), KERR_BAD_BITMAP) << "a palette of " << colors;
      EXPECT_TRUE(before.unchanged());
    }
    setPalette(bitmap, grayPalette(17));
    const Snapshot before(bitmap);
    for (const size_t call : {1, 3, 5}) {
      const ProgressLog log(call, -77);
      EXPECT_EQ(convert(&bitmap, target, 333), -77);
      EXPECT_TRUE(before.unchanged()) << "stopped at call " << call;
    }
    const ProgressLog log;
    EXPECT_EQ(convert(&bitmap, target, 0), KSUCCESS) << "colours to spare";
    EXPECT_EQ(log.percents, (std::vector<int>{0, 25, 50, 75, 100}));
  }
}

}  // namespace
