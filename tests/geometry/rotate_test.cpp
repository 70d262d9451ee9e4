// Rotation by any angle, and the sine table behind it.
#include <zavo.h>

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr COLORREF indexZero = 0x01000000;
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

}  // namespace
