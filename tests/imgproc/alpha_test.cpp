// The alpha channel as a picture of its own.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>

#include "imgproc/pixel_model.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

// A pixel's alpha as a level; pixels are as Picture has them.
uint32_t alphaOf(uint32_t pixel, int bits) {
  return bits == 32 ? pixel & 0xFF : (pixel & 0x80) != 0 ? 255 : 0;
}

uint32_t withAlpha(uint32_t pixel, unsigned level, int bits) {
  return bits == 32 ? (pixel & ~0xFFu) | level : (pixel & ~0x80u) | (level & 0x80);
}

TEST(Alpha, ComesOutAsAGreyPicture) {
  std::mt19937 random(660);
  for (const int bits : {16, 32}) {
    for (const int perspective : perspectives) {
      for (int width = 1; width <= 40; ++width) {
        SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", width " << width);
        TestBitmap bitmap(width, 3, bits);
        makeRandom(bitmap, random);
        bitmap.ViewPerspective = perspective;
        bitmap.XResolution = 72;
        const Snapshot before(bitmap);
        TestBitmap alpha;
        ASSERT_EQ(Zv_GetBitmapAlpha(&bitmap, &alpha), KSUCCESS);
        EXPECT_TRUE(before.unchanged());
        EXPECT_EQ(alpha.BitsPerPixel, 8);
        EXPECT_EQ(Zv_IsGrayScaleBitmap(&alpha), 1);
        EXPECT_EQ(alpha.ViewPerspective, perspective);
        EXPECT_EQ(alpha.XResolution, 72);
        EXPECT_EQ(alpha.YResolution, bitmap.YResolution);
        Picture expected = pictureOf(bitmap);
        for (uint32_t& pixel : expected.pixels) pixel = alphaOf(pixel, bits);
        expectSame(pictureOf(alpha), expected);
      }
    }
  }
}

TEST(Alpha, GoesInFromTheBrightnessOfAnyPicture) {
  for (unsigned number = 0; number < 400; ++number) {
    std::mt19937 random(number);
    const int bits = number % 2 == 0 ? 16 : 32;
    const int alphaBits = allDepths[random() % std::size(allDepths)];
    const int width = static_cast<int>(random() % 40) + 1;
    const int height = static_cast<int>(random() % 10) + 1;
    TestBitmap bitmap(width, height, bits);
    makeRandom(bitmap, random);
    const int perspective = perspectives[random() % std::size(perspectives)];
    RECT size = {0, 0, width, height};
    Zv_RectFromBitmap(&bitmap, perspective, &size);
    TestBitmap alpha(size.right, size.bottom, alphaBits,
                     number % 3 == 0 ? ALLOC_MEMORY | ALLOC_RUNLENGTH : ALLOC_MEMORY);
    makeRandom(alpha, random);
    alpha.ViewPerspective = perspective;
    SCOPED_TRACE(testing::Message() << "case " << number << ": " << alphaBits << " bits into " << bits
                                    << ", perspective " << perspective << " into " << bitmap.ViewPerspective);
    const Snapshot before(alpha);
    const std::vector<Color> colors = colorsOf(alpha);
    Picture expected = pictureOf(bitmap);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        int column = x, row = y;
        Zv_PointFromBitmap(&bitmap, perspective, &column, &row);
        const Color& color = colors[static_cast<size_t>(row * alpha.Width + column)];
        expected.at(x, y) = withAlpha(expected.at(x, y), brightness(color), bits);
      }
    }
    ASSERT_EQ(Zv_SetBitmapAlpha(&bitmap, &alpha), KSUCCESS);
    ASSERT_NO_FATAL_FAILURE(expectSame(pictureOf(bitmap), expected));
    EXPECT_TRUE(before.unchanged());

    // What comes out goes in again.
    TestBitmap taken;
    ASSERT_EQ(Zv_GetBitmapAlpha(&bitmap, &taken), KSUCCESS);
    Zv_ClearBitmap(&alpha);
    ASSERT_EQ(Zv_SetBitmapAlpha(&bitmap, &alpha), KSUCCESS);
    ASSERT_EQ(Zv_SetBitmapAlpha(&bitmap, &taken), KSUCCESS);
    ASSERT_NO_FATAL_FAILURE(expectSame(pictureOf(bitmap), expected));
  }
}

TEST(Alpha, OfAPixelsOwnBrightness) {
  std::mt19937 random(661);
  TestBitmap bitmap(20, 4, 32);
  fillWithNoise(bitmap, random);
  const std::vector<Color> colors = colorsOf(bitmap);
  Picture expected = pictureOf(bitmap);
  for (size_t i = 0; i < colors.size(); ++i) {
    expected.pixels[i] = withAlpha(expected.pixels[i], brightness(colors[i]), 32);
  }
  ASSERT_EQ(Zv_SetBitmapAlpha(&bitmap, &bitmap), KSUCCESS);
  expectSame(pictureOf(bitmap), expected);
}

TEST(Alpha, RefusesWhatHasNone) {
  BitmapHandle empty{};
  BitmapHandle out{};
  out.Width = 1234;
  for (const int bits : {1, 4, 8, 24}) {
    TestBitmap bitmap(5, 5, bits), alpha(5, 5, 8);
    EXPECT_EQ(Zv_GetBitmapAlpha(&bitmap, &out), KERR_BAD_BPP);
    EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, &alpha), KERR_BAD_BPP);
  }
  TestBitmap bitmap(5, 4, 32);
  EXPECT_EQ(Zv_GetBitmapAlpha(nullptr, &out), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapAlpha(&empty, &out), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapAlpha(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapAlpha(&bitmap, &bitmap), KERR_BAD_PARAMETER);
  EXPECT_EQ(out.Width, 1234) << "touched in a failure";
  EXPECT_EQ(Zv_SetBitmapAlpha(nullptr, &bitmap), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, nullptr), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, &empty), KERR_BAD_BITMAP);
  const Snapshot before(bitmap);
  for (const SIZE size : {SIZE{4, 4}, SIZE{6, 4}, SIZE{5, 3}, SIZE{5, 5}, SIZE{4, 5}}) {
    TestBitmap alpha(size.cx, size.cy, 8);
    EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, &alpha), KERR_BAD_PARAMETER);
    EXPECT_TRUE(before.unchanged());
  }
  TestBitmap turned(4, 5, 8);
  turned.ViewPerspective = VIEW_TURNED_90;
  EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, &turned), KSUCCESS) << "its size as seen is right";
}

}  // namespace
