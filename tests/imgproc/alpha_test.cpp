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

void expectAlphaOut(BitmapHandle& bitmap) {
  const Snapshot before(bitmap);
  TestBitmap alpha;
  ASSERT_EQ(Zv_GetBitmapAlpha(&bitmap, &alpha), KSUCCESS);
  EXPECT_TRUE(before.unchanged());
  EXPECT_EQ(alpha.BitsPerPixel, 8);
  EXPECT_EQ(Zv_IsGrayScaleBitmap(&alpha), 1);
  EXPECT_EQ(alpha.ViewPerspective, bitmap.ViewPerspective);
  EXPECT_EQ(alpha.XResolution, 72);
  EXPECT_EQ(alpha.YResolution, bitmap.YResolution);
  Picture expected = pictureOf(bitmap);
  for (uint32_t& pixel : expected.pixels) pixel = alphaOf(pixel, bitmap.BitsPerPixel);
  expectSame(pictureOf(alpha), expected);
}

void expectAlphaIn(BitmapHandle& bitmap, BitmapHandle& alpha) {
  const std::vector<Color> colors = colorsOf(alpha);
  Picture expected = pictureOf(bitmap);
  for (int y = 0; y < expected.height; ++y) {
    for (int x = 0; x < expected.width; ++x) {
      int column = x, row = y;
      Zv_PointFromBitmap(&bitmap, alpha.ViewPerspective, &column, &row);
      const unsigned level = brightness(colors[static_cast<size_t>(row * alpha.Width + column)]);
      expected.at(x, y) = withAlpha(expected.at(x, y), level, bitmap.BitsPerPixel);
    }
  }
  ASSERT_EQ(Zv_SetBitmapAlpha(&bitmap, &alpha), KSUCCESS);
  expectSame(pictureOf(bitmap), expected);
}

TEST(Alpha, ComesOutAsGreyAndGoesInFromTheBrightnessOfAnyPicture) {
  for (unsigned number = 0; number < 600; ++number) {
    std::mt19937 random(number);
    const int bits = number % 2 == 0 ? 16 : 32;
    const int alphaBits = allDepths[random() % std::size(allDepths)];
    TestBitmap bitmap(number / 2 % 75 + 1, random() % 10 + 1, bits);
    makeRandom(bitmap, random);
    bitmap.XResolution = 72;
    const int perspective = perspectives[random() % std::size(perspectives)];
    RECT size = {0, 0, bitmap.Width, bitmap.Height};
    Zv_RectFromBitmap(&bitmap, perspective, &size);
    TestBitmap alpha(size.right, size.bottom, alphaBits,
                     number % 3 == 0 ? ALLOC_MEMORY | ALLOC_RUNLENGTH : ALLOC_MEMORY);
    makeRandom(alpha, random);
    alpha.ViewPerspective = perspective;
    SCOPED_TRACE(testing::Message() << "case " << number << ": " << alphaBits << " bits into " << bits
                                    << ", perspective " << perspective << " into " << bitmap.ViewPerspective);
    ASSERT_NO_FATAL_FAILURE(expectAlphaOut(bitmap));
    const Snapshot before(alpha);
    ASSERT_NO_FATAL_FAILURE(expectAlphaIn(bitmap, alpha));
    EXPECT_TRUE(before.unchanged());
    ASSERT_NO_FATAL_FAILURE(expectAlphaIn(bitmap, bitmap));
  }
}

TEST(Alpha, RefusesWhatHasNone) {
  BitmapHandle empty{}, out{};
  out.Width = 1234;
  for (const int bits : {1, 4, 8, 24}) {
    TestBitmap bitmap(5, 5, bits), alpha(5, 5, 8);
    EXPECT_EQ(Zv_GetBitmapAlpha(&bitmap, &out), KERR_BAD_BPP);
    EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, &alpha), KERR_BAD_BPP);
  }
  TestBitmap bitmap(5, 4, 32);
  const Snapshot before(bitmap);
  EXPECT_EQ(Zv_GetBitmapAlpha(nullptr, &out), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapAlpha(&empty, &out), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapAlpha(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapAlpha(&bitmap, &bitmap), KERR_BAD_PARAMETER);
  EXPECT_EQ(out.Width, 1234) << "touched in a failure";
  EXPECT_EQ(Zv_SetBitmapAlpha(nullptr, &bitmap), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, nullptr), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, &empty), KERR_BAD_BITMAP);
  for (const SIZE size : {SIZE{4, 4}, SIZE{6, 4}, SIZE{5, 3}, SIZE{5, 5}, SIZE{4, 5}}) {
    TestBitmap alpha(size.cx, size.cy, 8);
    EXPECT_EQ(Zv_SetBitmapAlpha(&bitmap, &alpha), KERR_BAD_PARAMETER);
  }
  EXPECT_TRUE(before.unchanged());
}

}  // namespace
