// Single pixels as colour values, in every format, through regions and outside.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>
#include <random>

#include "color/colors.h"

namespace {

using namespace zavotest;

COLORREF readColor(uint32_t pixel, const Format& format) {
  const Color c = colorOf(pixel, format);
  return RGB(c.red, c.green, c.blue);
}

uint32_t pixelOf(COLORREF color, uint32_t before, const Format& format) {
  if (format.depth <= 8 && color >> 24 == 1) return color & ((1u << format.depth) - 1);
  const uint32_t bytes = (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
  return convertedPixel(bytes, {24, ORDER_RED_FIRST}, format) | (format.depth == 32 ? before & 255 : 0);
}

TEST(PixelColor, ReadsAndWritesEveryFormat) {
  for (const int bits : allDepths) {
    for (const int variant : {0, 1, 2}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, variant " << variant);
      std::mt19937 random(static_cast<unsigned>(bits));
      TestBitmap bitmap(19, 5, bits, variant == 1 ? ALLOC_MEMORY | ALLOC_RUNLENGTH : ALLOC_MEMORY);
      if (bits <= 8) giveRandomPalette(bitmap, random);
      fillWithNoise(bitmap, random);
      if (bits > 8) bitmap.ColorOrder = variant;  // what is not 1 is red first
      const RECT box = {2, 1, 15, 4};
      if (variant == 1) Zv_SetBitmapRgnRect(&bitmap, nullptr, &box, CombineSet);
      const Format format = formatOf(bitmap);
      Picture picture = pictureOf(bitmap);
      for (unsigned i = 0; i < 400; ++i) {
        const int x = i % 50 == 0 ? INT_MAX : static_cast<int>(random() % 21) - 1;
        const int y = i % 50 == 1 ? INT_MIN : static_cast<int>(random() % 7) - 1;
        // A top byte of 1 is an index, any other is not looked at.
        const COLORREF color = (random() & 0xFFFFFF) | i % 3 << 24;
        const bool exists = x >= 0 && x < 19 && y >= 0 && y < 5;
        // The region limits writing only.
        const bool inside = exists && (variant != 1 || PtInRect(&box, {x, y}));
        SCOPED_TRACE(testing::Message() << "at " << x << ", " << y);
        ASSERT_EQ(Zv_GetPixelColor(&bitmap, y, x), exists ? readColor(picture.at(x, y), format) : 0x80000000);
        ASSERT_EQ(Zv_PutPixelColor(&bitmap, y, x, color), inside ? KSUCCESS : KERR_EMPTY);
        if (inside) picture.at(x, y) = pixelOf(color, picture.at(x, y), format);
        ASSERT_EQ(pictureOf(bitmap), picture);
      }
    }
  }
  BitmapHandle unallocated{};
  for (BitmapHandle* bitmap : {&unallocated, static_cast<BitmapHandle*>(nullptr)}) {
    EXPECT_EQ(Zv_GetPixelColor(bitmap, 0, 0), 0x80000000);
    EXPECT_EQ(Zv_PutPixelColor(bitmap, 0, 0, 0), KERR_BAD_BITMAP);
  }
}

}  // namespace
