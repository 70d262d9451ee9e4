// Rotation of bitmaps, the perspectives it works in, and the sine table behind it.
#include <zavo.h>

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

#include "support/progress_log.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr COLORREF indexZero = 0x01000000;
constexpr int perspectives[] = {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270};

// One clockwise quarter at a time, straight from the rule: what was on the left comes to the top.
Picture turned(const Picture& picture, int quarters) {
  if (quarters == 0) return picture;
  Picture once(picture.height, picture.width);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) once.at(picture.height - 1 - y, x) = picture.at(x, y);
  }
  return turned(once, quarters - 1);
}

// The picture as a user sees it.
Picture seen(BitmapHandle& bitmap) {
  Picture picture = pictureOf(bitmap);
  switch (bitmap.ViewPerspective) {
    case VIEW_BOTTOM_UP: {
      Picture upright = picture;
      for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) upright.at(x, y) = picture.at(x, picture.height - 1 - y);
      }
      return upright;
    }
    case VIEW_TURNED_90:
      return turned(picture, 1);
    case VIEW_TURNED_270:
      return turned(picture, 3);
    default:
      return picture;
  }
}

TEST(SineTable, QuarterWaveMirroredIntoAllQuarters) {
  const struct {
    int angle, value;
  } known[] = {{0, 0},          {4500, 11585},   {9000, 16384}, {18000, 0},
               {27000, -16384}, {31500, -11585}, {36000, 0},    {-9000, -16384}};
  for (const auto& k : known) EXPECT_EQ(Zv_SinValue(k.angle), k.value) << k.angle;
  for (int angle = 0; angle <= 9000; ++angle) {
    const double exact = 16384 * std::sin(angle / 100.0 * std::numbers::pi / 180);
    ASSERT_EQ(Zv_SinValue(angle), static_cast<int>(std::floor(exact + 0.5))) << angle;
    ASSERT_EQ(Zv_SinValue(18000 - angle), Zv_SinValue(angle));
    ASSERT_EQ(Zv_SinValue(18000 + angle), -Zv_SinValue(angle));
  }
}

TEST(Rotate, QuarterTurnsAreExactAtEveryDepthAndStorage) {
  std::mt19937 random(30);
  for (const int bits : allDepths) {
    for (const int memoryType : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
      for (const auto& [width, height] : {std::pair(1, 1), {9, 5}, {64, 64}, {131, 70}, {17, 530}, {530, 17}}) {
        for (const int quarters : {1, 2, 3}) {
          SCOPED_TRACE(testing::Message() << bits << " bits, " << width << " x " << height << ", " << quarters);
          TestBitmap bitmap(width, height, bits, memoryType);
          fillWithNoise(bitmap, random);
          bitmap.XResolution = 200;
          bitmap.YResolution = 100;
          const Picture before = pictureOf(bitmap);
          ASSERT_EQ(Zv_IntRotateBitmapFine(&bitmap, quarters * 9000, ROTATE_RESIZE, indexZero), KSUCCESS);
          ASSERT_TRUE(pictureOf(bitmap) == turned(before, quarters));
          ASSERT_EQ(bitmap.XResolution, quarters == 2 ? 200 : 100) << "resolution goes with the rows";
        }
      }
    }
  }
}

TEST(Rotate, TurnsTheSeenPictureClockwise) {
  std::mt19937 random(31);
  for (const int perspective : perspectives) {
    for (const int quarters : {1, 2, 3}) {
      SCOPED_TRACE(testing::Message() << perspective << " by " << quarters);
      TestBitmap bitmap(12, 7, 8);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = perspective;
      const Picture before = seen(bitmap);
      ASSERT_EQ(Zv_RotateBitmap(&bitmap, quarters * 90 - 720, ROTATE_RESIZE, indexZero), KSUCCESS);
      EXPECT_EQ(bitmap.ViewPerspective, perspective);
      EXPECT_TRUE(seen(bitmap) == turned(before, quarters));

      const Picture now = seen(bitmap);
      const unsigned char* pixels = bitmap.Data;
      ASSERT_EQ(Zv_RotateBitmapViewPerspective(&bitmap, quarters * 90), KSUCCESS);
      EXPECT_TRUE(seen(bitmap) == turned(now, quarters));
      if (perspective == VIEW_UPRIGHT && quarters != 2) {
        EXPECT_EQ(bitmap.Data, pixels) << "no pixel moves";
      }
    }
  }
  TestBitmap bitmap(4, 4, 8), empty;
  EXPECT_EQ(Zv_RotateBitmapViewPerspective(&bitmap, 45), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_RotateBitmapViewPerspective(&empty, 90), KERR_BAD_BITMAP);
}

TEST(ChangePerspective, ShowsTheSamePictureInEveryOther) {
  std::mt19937 random(32);
  for (const int from : perspectives) {
    for (const int to : perspectives) {
      for (const int memoryType : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
        SCOPED_TRACE(testing::Message() << from << " to " << to);
        TestBitmap bitmap(21, 9, 1, memoryType);
        fillWithNoise(bitmap, random);
        bitmap.ViewPerspective = from;
        const RECT box = {2, 3, 7, 8};
        ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &box, CombineSet), KSUCCESS);
        const Picture before = seen(bitmap);
        RECT seenBox = box;
        Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &seenBox);

        const ProgressLog log;
        TestBitmap copy;
        ASSERT_EQ(Zv_ChangeBitmapViewPerspective(&copy, &bitmap, to), KSUCCESS);
        EXPECT_EQ(bitmap.ViewPerspective, from);
        ASSERT_EQ(Zv_ChangeBitmapViewPerspective(nullptr, &bitmap, to), KSUCCESS);
        EXPECT_TRUE(log.percents.empty()) << "no progress is reported";
        for (BitmapHandle* changed : {static_cast<BitmapHandle*>(&copy), static_cast<BitmapHandle*>(&bitmap)}) {
          EXPECT_EQ(changed->ViewPerspective, to);
          EXPECT_TRUE(seen(*changed) == before);
          RECT bounds;
          ASSERT_EQ(Zv_GetBitmapRgnBounds(changed, nullptr, &bounds), KSUCCESS);
          Zv_RectFromBitmap(changed, VIEW_UPRIGHT, &bounds);
          EXPECT_TRUE(EqualRect(&bounds, &seenBox));
        }
      }
    }
  }
  BitmapHandle empty{};
  EXPECT_EQ(Zv_ChangeBitmapViewPerspective(nullptr, &empty, VIEW_UPRIGHT), KERR_BAD_PARAMETER);
}

// Every pixel of a finely turned image is the source pixel under its centre, or the fill colour.
TEST(Rotate, FineTurnsSampleUnderThePixelCentre) {
  std::mt19937 random(33);
  for (const int bits : allDepths) {
    for (const int angle : {100, 3000, 4500, 9000, 12345, 20000, -777}) {
      for (const unsigned flags : {0u, unsigned{ROTATE_RESIZE}}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, angle " << angle << ", flags " << flags);
        TestBitmap bitmap(31, 18, bits);
        fillWithNoise(bitmap, random);
        const Picture before = pictureOf(bitmap);
        ASSERT_EQ(Zv_IntRotateBitmapFine(&bitmap, angle, flags, bits <= 8 ? indexZero : 0), KSUCCESS);
        const Picture after = pictureOf(bitmap);
        const double radians = angle / 100.0 * std::numbers::pi / 180;
        const double sin = std::sin(radians), cos = std::cos(radians);
        if (flags == 0) {
          ASSERT_EQ(after.width, 31);
        } else {
          ASSERT_EQ(after.width, std::ceil(31 * std::abs(cos) + 18 * std::abs(sin) - 1e-3));
        }
        for (int y = 0; y < after.height; ++y) {
          for (int x = 0; x < after.width; ++x) {
            const double u = x - (after.width - 1) / 2.0, v = y - (after.height - 1) / 2.0;
            const double fromX = u * cos + v * sin + 15.5, fromY = v * cos - u * sin + 9;
            // Too near to an edge between pixels for the table's precision to decide.
            if (std::abs(fromX - std::round(fromX)) < 0.01 || std::abs(fromY - std::round(fromY)) < 0.01) continue;
            const int column = static_cast<int>(std::floor(fromX)), row = static_cast<int>(std::floor(fromY));
            ASSERT_EQ(after.at(x, y), before.orZero(column, row)) << "at " << x << ", " << y;
          }
        }
      }
    }
  }
}

TEST(Rotate, ResamplingBlendsEdgesAndKeepsFlatPartsFlat) {
  for (const int bits : {0, 24, 32}) {  // 0 bits: an 8-bit image with a grey palette
    SCOPED_TRACE(bits);
    TestBitmap bitmap;
    ASSERT_EQ(Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 40, 40, bits, ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT), KSUCCESS);
    const size_t pixelBytes = static_cast<size_t>(bitmap.BitsPerPixel) / 8;
    for (size_t y = 0; y < 40; ++y)
      memset(bitmap.Data + y * bitmap.BytesPerLine + 20 * pixelBytes, 100, 20 * pixelBytes);
    ASSERT_EQ(Zv_RotateBitmapFine(&bitmap, 1000, ROTATE_RESAMPLE, 0), KSUCCESS);
    int flat = 0, between = 0;
    for (size_t x = 8; x < 32; ++x) {
      const uint8_t value = bitmap.Data[20 * bitmap.BytesPerLine + x * pixelBytes];
      EXPECT_LE(value, 100);
      (value == 0 || value == 100 ? flat : between) += 1;
    }
    EXPECT_GT(flat, 18);
    EXPECT_GE(between, 1) << "the edge is smoothed";
  }
}

TEST(Rotate, RegionTurnsAlong) {
  TestBitmap bitmap(60, 40, 8);
  const RECT box = {10, 5, 30, 15};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &box, CombineSet), KSUCCESS);
  ASSERT_EQ(Zv_IntRotateBitmapFine(&bitmap, 9000, ROTATE_RESIZE, 0), KSUCCESS);
  RECT bounds;
  const RECT expected = {25, 10, 35, 30};
  ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  EXPECT_TRUE(EqualRect(&bounds, &expected));
  ASSERT_EQ(Zv_IntRotateBitmapFine(&bitmap, 3300, ROTATE_RESIZE, 0), KSUCCESS);
  unsigned area = 0;
  ASSERT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
  EXPECT_NEAR(area, 200, 20);

  TestBitmap cut(100, 10, 8);
  const RECT end = {90, 0, 100, 10};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&cut, nullptr, &end, CombineSet), KSUCCESS);
  ASSERT_EQ(Zv_IntRotateBitmapFine(&cut, 9000, 0, 0), KSUCCESS);
  EXPECT_EQ(Zv_BitmapHasRgn(&cut), 1);
  ASSERT_EQ(Zv_GetBitmapRgnArea(&cut, &area), KSUCCESS);
  EXPECT_EQ(area, 0u) << "a region turned out of the picture is empty, not everything";
}

TEST(Rotate, AbortLeavesTheBitmapWhole) {
  TestBitmap bitmap(33, 21, 24);
  std::mt19937 random(34);
  fillWithNoise(bitmap, random);
  const Snapshot before(bitmap);
  for (const int angle : {9000, 18000, 3000}) {
    const ProgressLog log(2, -5);
    EXPECT_EQ(Zv_RotateBitmapFine(&bitmap, angle, ROTATE_RESIZE, 0), -5);
    EXPECT_TRUE(before.unchanged());
  }
  EXPECT_EQ(Zv_RotateBitmapFine(&bitmap, 36000, ROTATE_RESIZE, 0), KSUCCESS);
  EXPECT_TRUE(before.unchanged()) << "a whole turn does nothing";
  EXPECT_EQ(Zv_RotateBitmapFine(nullptr, 100, 0, 0), KERR_BAD_BITMAP);
}

}  // namespace
