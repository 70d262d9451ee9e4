// Bitmaps turned into black and white by straight and turned screens.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <utility>

#include "imgproc/gray_checks.h"
#include "imgproc/turned_screen.h"
#include "support/progress_log.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

constexpr unsigned screens[2][8][8] = {
    {{112, 40, 72, 104, 144, 176, 208, 136},
     {88, 8, 16, 48, 192, 232, 240, 168},
     {56, 24, 0, 80, 160, 224, 248, 200},
     {96, 64, 32, 120, 128, 216, 184, 152},
     {148, 180, 212, 140, 116, 44, 76, 108},
     {196, 236, 244, 172, 92, 12, 20, 52},
     {164, 228, 252, 204, 60, 28, 4, 84},
     {132, 220, 188, 156, 100, 68, 36, 124}},
    {{0, 128, 32, 160, 8, 136, 40, 168},
     {192, 64, 224, 96, 200, 72, 232, 104},
     {48, 176, 16, 144, 56, 184, 24, 152},
     {236, 112, 208, 80, 244, 120, 216, 88},
     {12, 140, 44, 172, 4, 132, 36, 164},
     {204, 76, 232, 108, 196, 68, 228, 100},
     {60, 188, 28, 156, 52, 180, 20, 148},
     {248, 124, 220, 92, 240, 116, 212, 84}},
};
constexpr int types[] = {HALFTONE_CLUSTERED, HALFTONE_DISPERSED};

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

void expectHalftone(BitmapHandle& halftone, const std::vector<unsigned>& levels, int type, int angle) {
  const Picture picture = pictureOf(halftone);
  ASSERT_EQ(picture.pixels.size(), levels.size());
  size_t i = 0;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x, ++i) {
      ASSERT_EQ(picture.pixels[i], levels[i] > thresholdAt(type, angle, x, y) ? 1u : 0u) << "at " << x << ", " << y;
    }
  }
}

TEST(HalfTone, PixelsAboveTheirThresholdAreWhiteAtEveryDepthAndWidth) {
  std::mt19937 random(630);
  for (const int bits : allDepths) {
    for (const int type : types) {
      for (int width = 1; width <= 70; ++width) {
        SCOPED_TRACE(testing::Message() << bits << " bits, type " << type << ", width " << width);
        const bool runs = bits == 1 && width % 2 == 0;
        NoiseBitmap bitmap(width, width % 20 + 1, bits, random, runs ? ALLOC_MEMORY | ALLOC_RUNLENGTH : ALLOC_MEMORY);
        const std::vector<unsigned> levels = levelsOf(bitmap);
        ASSERT_EQ(Zv_HalfToneBitmap(&bitmap, type), KSUCCESS);
        expectHalftone(bitmap, levels, type, 0);
        expectCleanPadding(bitmap);
      }
    }
  }
}

TEST(HalfTone, ThresholdsAreStrict) {
  for (const int type : types) {
    for (unsigned level = 0; level < 256; ++level) {
      TestBitmap bitmap(8, 8, 8);
      DeleteObject(bitmap.Palette);
      bitmap.Palette = Zv_CreateGrayPalette(8);
      ASSERT_EQ(Zv_FillBitmap(&bitmap, 0x01000000u | level), KSUCCESS);
      ASSERT_EQ(Zv_HalfToneBitmap(&bitmap, type), KSUCCESS);
      const Picture picture = pictureOf(bitmap);
      for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) EXPECT_EQ(picture.at(x, y), level > screens[type][y & 7][x & 7] ? 1u : 0u) << level;
      }
    }
  }
}

TEST(HalfTone, ScreensTurnByAnyAngle) {
  std::mt19937 random(631);
  const int angles[] = {1,     1500,  4500, 7500,  8999,   9000,    9001,   18000,
                        27000, 35999, -1,   -4500, 123456, -987654, INT_MAX};
  for (const int type : types) {
    for (int k = 0; k < 60; ++k) {
      const size_t given = static_cast<size_t>(k);
      const int angle = given < std::size(angles) ? angles[given] : static_cast<int>(random() % 80000) - 40000;
      const int bits = allDepths[random() % std::size(allDepths)];
      const int width = static_cast<int>(random() % 130) + 1;
      SCOPED_TRACE(testing::Message() << "angle " << angle << ", type " << type << ", " << bits << " bits, " << width);
      NoiseBitmap bitmap(width, 21, bits, random);
      const std::vector<unsigned> levels = levelsOf(bitmap);
      ASSERT_EQ(Zv_HalfToneBitmapExt(&bitmap, type, angle), KSUCCESS);
      expectHalftone(bitmap, levels, type, angle);
      expectCleanPadding(bitmap);
    }
  }
}

TEST(HalfTone, QuarterTurnsOfTheScreenAreExact) {
  std::mt19937 random(632);
  NoiseBitmap bitmap(40, 30, 8, random);
  const std::vector<unsigned> levels = levelsOf(bitmap);
  ASSERT_EQ(Zv_HalfToneBitmapExt(&bitmap, HALFTONE_CLUSTERED, 9000), KSUCCESS);
  const Picture picture = pictureOf(bitmap);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 40; ++x) {
      const unsigned threshold = screens[HALFTONE_CLUSTERED][(80 - x) % 8][y % 8];
      ASSERT_EQ(picture.at(x, y), levels[static_cast<size_t>(y * 40 + x)] > threshold ? 1u : 0u) << x << ", " << y;
    }
  }
}

TEST(HalfTone, VectorCodeAndPlainCodeAgree) {
  if (!__builtin_cpu_supports("ssse3")) GTEST_SKIP() << "this processor has no SSSE3";
  std::mt19937 random(636);
  for (unsigned width = 1; width <= 130; ++width) {
    for (int k = 0; k < 8; ++k) {
      SCOPED_TRACE(testing::Message() << "width " << width << ", number " << k);
      std::vector<uint8_t> levels(width);
      for (uint8_t& level : levels) level = static_cast<uint8_t>(random());
      const zavo::ScreenPlace place = {random(), random()}, step = {random() % 32769 - 16384, random() % 32769 - 16384};
      const zavo::ThresholdMatrix& matrix = k % 2 == 0 ? zavo::clusteredMatrix : zavo::dispersedMatrix;
      std::vector<uint8_t> plain((width + 7) / 8 + 4, 0xA5), vectors = plain;
      zavo::turnedRowPlain(plain.data(), levels.data(), width, matrix, place, step);
      zavo::turnedRowSsse3(vectors.data(), levels.data(), width, matrix, place, step);
      ASSERT_EQ(plain, vectors);
      ASSERT_EQ(plain[(width + 7) / 8], 0xA5) << "behind the row";
    }
  }
}

// Positions on the screen pass 32 bits after 131072 pixels.
TEST(HalfTone, HasNoSeamHoweverWide) {
  std::mt19937 random(633);
  for (const int angle : {1500, 35999, 20000}) {
    SCOPED_TRACE(angle);
    TestBitmap wide(300000, 2, 1), tall(2, 300000, 1);
    for (BitmapHandle* bitmap : {static_cast<BitmapHandle*>(&wide), static_cast<BitmapHandle*>(&tall)}) {
      fillWithNoise(*bitmap, random);
      giveRandomPalette(*bitmap, random);
      const std::vector<unsigned> levels = levelsOf(*bitmap);
      ASSERT_EQ(Zv_HalfToneBitmapExt(bitmap, HALFTONE_DISPERSED, angle), KSUCCESS);
      expectHalftone(*bitmap, levels, HALFTONE_DISPERSED, angle);
    }
  }
}

TEST(HalfTone, WholeTurnsChangeNothing) {
  std::mt19937 random(634);
  for (const int angle : {0, 1234, -4500}) {
    std::vector<uint8_t> first;
    for (const int turns : {0, 1, -1, 2, -2, 50000, -50000}) {
      std::mt19937 same(7);
      NoiseBitmap bitmap(61, 33, 24, same);
      ASSERT_EQ(Zv_HalfToneBitmapExt(&bitmap, HALFTONE_CLUSTERED, angle + turns * 36000), KSUCCESS);
      if (turns == 0) first = bytesOf(bitmap);
      EXPECT_TRUE(bytesOf(bitmap) == first) << angle << " and " << turns << " turns";
    }
  }
  NoiseBitmap lowest(61, 33, 24, random);
  EXPECT_EQ(Zv_HalfToneBitmapExt(&lowest, HALFTONE_CLUSTERED, INT_MIN), KSUCCESS);
}

// The part of white pixels follows the brightness, whatever the angle.
TEST(HalfTone, KeepsTheBrightnessOfAnArea) {
  for (const int type : types) {
    for (const int angle : {0, 700, 1500, 4500, 7500}) {
      for (const unsigned level : {0u, 30u, 128u, 200u, 255u}) {
        SCOPED_TRACE(testing::Message() << "type " << type << ", angle " << angle << ", level " << level);
        TestBitmap bitmap(320, 320, 24);
        ASSERT_EQ(Zv_FillBitmap(&bitmap, RGB(level, level, level)), KSUCCESS);
        ASSERT_EQ(Zv_HalfToneBitmapExt(&bitmap, type, angle), KSUCCESS);
        const unsigned* cells = &screens[type][0][0];
        const auto below = std::count_if(cells, cells + 64, [&](unsigned threshold) { return level > threshold; });
        const Picture picture = pictureOf(bitmap);
        const double white = double(std::count(picture.pixels.begin(), picture.pixels.end(), 1u));
        EXPECT_NEAR(white / double(picture.pixels.size()), double(below) / 64, level % 255 == 0 ? 0 : 0.01);
      }
    }
  }
}

TEST(HalfTone, TheHandleTakesTheNewImageAndKeepsTheRest) {
  std::mt19937 random(635);
  for (const int perspective : {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270}) {
    TestBitmap bitmap(33, 14, 4);
    fillWithNoise(bitmap, random);
    describe(bitmap, perspective);
    const RECT oval = {2, 1, 20, 12};
    ASSERT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &oval, CombineSet), KSUCCESS);
    const RegionExtent region = regionExtentOf(bitmap);
    const BitmapHandle before = bitmap;
    ASSERT_EQ(Zv_HalfToneBitmap(&bitmap, HALFTONE_DISPERSED), KSUCCESS);
    expectDescribed(bitmap, before, 1);
    EXPECT_TRUE(regionExtentOf(bitmap) == region);
    EXPECT_EQ(colorOf(paletteOf(bitmap)[0]), (Color{0, 0, 0}));
    EXPECT_EQ(colorOf(paletteOf(bitmap)[1]), (Color{255, 255, 255}));
  }
}

TEST(HalfTone, RefusesAndStopsWithoutATrace) {
  BitmapHandle empty{};
  EXPECT_EQ(Zv_HalfToneBitmap(nullptr, 7), KERR_BAD_BITMAP) << "before the type";
  EXPECT_EQ(Zv_HalfToneBitmapExt(&empty, HALFTONE_CLUSTERED, 0), KERR_BAD_BITMAP);
  TestBitmap bitmap(9, 4, 4);
  const HPALETTE palette = std::exchange(bitmap.Palette, nullptr);
  for (const int type : {-1, 2, INT_MAX}) {
    EXPECT_EQ(Zv_HalfToneBitmap(&bitmap, type), KERR_BAD_PARAMETER) << "before the palette";
    EXPECT_EQ(Zv_HalfToneBitmapExt(&bitmap, type, 100), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_HalfToneBitmap(&bitmap, HALFTONE_CLUSTERED), KERR_BAD_BITMAP);
  bitmap.Palette = palette;

  const Snapshot before(bitmap);
  for (const size_t call : {1, 3, 5}) {
    const ProgressLog log(call, 0);
    EXPECT_EQ(Zv_HalfToneBitmapExt(&bitmap, HALFTONE_CLUSTERED, 333), 0);
    EXPECT_TRUE(before.unchanged()) << "stopped at call " << call;
  }
  const ProgressLog log;
  EXPECT_EQ(Zv_HalfToneBitmap(&bitmap, HALFTONE_CLUSTERED), KSUCCESS);
  EXPECT_EQ(log.percents, (std::vector<int>{0, 25, 50, 75, 100}));
}

}  // namespace
