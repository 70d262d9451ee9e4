// Single pixels as colour values, in every format.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>
#include <random>

#include "support/test_bitmap.h"

namespace {

using zavotest::Picture;
using zavotest::TestBitmap;

constexpr COLORREF noColor = 0x80000000;

// A pixel's bits in storage order as a colour value.
COLORREF modelColor(const BitmapHandle& bitmap, uint32_t pixel) {
  unsigned red = 0, green = 0, blue = 0;
  const auto byte = [&](unsigned k) {
    return pixel >> (static_cast<unsigned>(bitmap.BitsPerPixel) - 8 * (k + 1)) & 255;
  };
  const auto wide = [](unsigned c) { return c << 3 | c >> 2; };
  if (bitmap.BitsPerPixel <= 8) {
    const PALETTEENTRY entry = zavotest::colorsOf(bitmap)[pixel];
    return RGB(entry.peRed, entry.peGreen, entry.peBlue);
  }
  if (bitmap.BitsPerPixel == 16) {
    const unsigned word = byte(0) | byte(1) << 8;
    red = wide(word >> 10 & 31), green = wide(word >> 5 & 31), blue = wide(word & 31);
  } else {
    red = byte(2), green = byte(1), blue = byte(0);
  }
  return bitmap.ColorOrder == 0 ? RGB(blue, green, red) : RGB(red, green, blue);
}

uint32_t modelPixel(const BitmapHandle& bitmap, uint32_t before, COLORREF color) {
  const auto bits = static_cast<unsigned>(bitmap.BitsPerPixel);
  unsigned red = GetRValue(color), green = GetGValue(color), blue = GetBValue(color);
  if (bits <= 8) {
    if (color >> 24 == 1) return color & ((1u << bits) - 1);
    RGBQUAD palette[256] = {};
    Zv_GetPaletteEntries(bitmap.Palette, 0, 256, palette);
    return Zv_FindPaletteIndex(palette, 1u << bits, red, green, blue);
  }
  if (bitmap.ColorOrder == 0) std::swap(red, blue);
  if (bits == 16) {
    const unsigned word = red >> 3 << 10 | green >> 3 << 5 | blue >> 3;
    return (word & 255) << 8 | word >> 8;
  }
  const unsigned three = blue << 16 | green << 8 | red;
  return bits == 24 ? three : three << 8 | (before & 255);
}

TEST(PixelColor, ReadsAndWritesEveryFormat) {
  for (const int bits : zavotest::allDepths) {
    for (const int order : {0, 1}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, order " << order);
      std::mt19937 random(static_cast<unsigned>(bits));
      TestBitmap bitmap(19, 5, bits);
      ASSERT_TRUE(bitmap.allocated());
      zavotest::giveRandomPalette(bitmap, random);
      zavotest::fillWithNoise(bitmap, random);
      if (bits > 8) bitmap.ColorOrder = order;
      Picture picture = zavotest::pictureOf(bitmap);
      for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
          ASSERT_EQ(Zv_GetPixelColor(&bitmap, y, x), modelColor(bitmap, picture.at(x, y))) << x << " " << y;
        }
      }
      for (int i = 0; i < 200; ++i) {
        const int x = static_cast<int>(random() % 19), y = static_cast<int>(random() % 5);
        // A top byte of 1 is an index, any other is not looked at.
        const COLORREF color = (random() & 0xFFFFFF) | (i % 3) << 24;
        ASSERT_EQ(Zv_PutPixelColor(&bitmap, y, x, color), KSUCCESS);
        picture.at(x, y) = modelPixel(bitmap, picture.at(x, y), color);
        ASSERT_EQ(zavotest::pictureOf(bitmap), picture) << x << " " << y << " color " << color;
      }
    }
  }
}

TEST(PixelColor, KnownValues) {
  TestBitmap mono(9, 2, 1);
  EXPECT_EQ(Zv_GetPixelColor(&mono, 1, 8), 0x000000u);
  EXPECT_EQ(Zv_PutPixelColor(&mono, 1, 8, 0xC0C0C0), KSUCCESS);
  EXPECT_EQ(Zv_GetPixelColor(&mono, 1, 8), 0xFFFFFFu);

  TestBitmap indexed(4, 4, 8);
  EXPECT_EQ(Zv_PutPixelColor(&indexed, 0, 0, 0x01000005), KSUCCESS);
  EXPECT_EQ(zavotest::bytesOf(indexed)[0], 5);
  EXPECT_EQ(Zv_PutPixelColor(&indexed, 0, 1, 0x00000005), KSUCCESS);
  EXPECT_EQ(zavotest::bytesOf(indexed)[1], Zv_FindPaletteIndex(Zv_IntGetFixedPalette(8), 256, 5, 0, 0));

  TestBitmap words(4, 4, 16);
  EXPECT_EQ(Zv_PutPixelColor(&words, 0, 0, 0x0000FF), KSUCCESS);
  EXPECT_EQ(zavotest::bytesOf(words)[0], 0x00);
  EXPECT_EQ(zavotest::bytesOf(words)[1], 0x7C);
  EXPECT_EQ(Zv_GetPixelColor(&words, 0, 0), 0x0000FFu);
}

TEST(PixelColor, RunLengthRows) {
  TestBitmap bitmap(100, 3, 1, ALLOC_MEMORY | ALLOC_RUNLENGTH);
  ASSERT_TRUE(bitmap.allocated());
  for (const int x : {0, 7, 8, 63, 99}) {
    EXPECT_EQ(Zv_PutPixelColor(&bitmap, 1, x, 0xFFFFFF), KSUCCESS);
    EXPECT_EQ(Zv_GetPixelColor(&bitmap, 1, x), 0xFFFFFFu) << x;
  }
  EXPECT_EQ(Zv_GetPixelColor(&bitmap, 1, 6), 0u);
  EXPECT_EQ(Zv_GetPixelColor(&bitmap, 1, 9), 0u);
  EXPECT_EQ(Zv_GetPixelColor(&bitmap, 0, 7), 0u);
}

TEST(PixelColor, OutsideTheBitmap) {
  TestBitmap bitmap(6, 4, 24);
  const std::vector<uint8_t> before = zavotest::bytesOf(bitmap);
  const struct { int row, column; } outside[] = {{-1, 0}, {0, -1}, {4, 0}, {0, 6}, {INT_MIN, 0}, {0, INT_MAX}};
  for (const auto& c : outside) {
    EXPECT_EQ(Zv_GetPixelColor(&bitmap, c.row, c.column), noColor);
    EXPECT_EQ(Zv_PutPixelColor(&bitmap, c.row, c.column, 0xFFFFFF), KERR_EMPTY);
  }
  EXPECT_EQ(zavotest::bytesOf(bitmap), before);

  BitmapHandle unallocated{};
  EXPECT_EQ(Zv_GetPixelColor(nullptr, 0, 0), noColor);
  EXPECT_EQ(Zv_GetPixelColor(&unallocated, 0, 0), noColor);
  EXPECT_EQ(Zv_PutPixelColor(nullptr, 0, 0, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_PutPixelColor(&unallocated, 0, 0, 0), KERR_BAD_BITMAP);
}

TEST(PixelColor, RegionLimitsWritingOnly) {
  TestBitmap bitmap(8, 8, 24);
  const RECT box = {2, 3, 5, 6};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &box, CombineSet), KSUCCESS);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) {
      const bool inside = x >= 2 && x < 5 && y >= 3 && y < 6;
      EXPECT_EQ(Zv_PutPixelColor(&bitmap, y, x, 0x123456), inside ? KSUCCESS : KERR_EMPTY) << x << " " << y;
      EXPECT_EQ(Zv_GetPixelColor(&bitmap, y, x), inside ? 0x123456u : 0u) << x << " " << y;
    }
  }
}

}  // namespace
