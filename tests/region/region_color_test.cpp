// Regions from colours and masks, against looking at every pixel.
#include <string>

#include "region/region_model.h"
#include "support/progress_log.h"

namespace zavotest {
namespace {

// Rows of few different pixels in long and short runs; palettes of more than 2 colours have two equal entries.
void fillWithRuns(BitmapHandle& bitmap, std::mt19937& random) {
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int bits = bitmap.BitsPerPixel;
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < bitmap.Height; ++y) {
    for (auto& byte : row) byte = static_cast<uint8_t>(random());
    unsigned pixel[4] = {};
    int left = 0;
    for (int x = 0; x < bitmap.Width; ++x, --left) {
      if (left == 0) {
        left = static_cast<int>(random() % (random() % 2 != 0 ? 3 : 70)) + 1;
        // Bytes of a colour that is searched for, or of one that differs in a channel.
        for (unsigned& byte : pixel) byte = random() % 4 == 0 ? 0x10 : 0xFF;
        if (bits <= 8) pixel[0] = random() % 2 != 0 ? 1 : random();
      }
      for (int k = 0; k < bits; ++k) {
        const unsigned from = bits <= 8 ? pixel[0] >> (bits - 1 - k) & 1 : pixel[k / 8] >> (7 - k % 8) & 1;
        const int at = x * bits + k;
        uint8_t& byte = row[static_cast<size_t>(at / 8)];
        byte = static_cast<uint8_t>((byte & ~(0x80 >> at % 8)) | (from << (7 - at % 8)));
      }
    }
    Zv_PutBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

// Whether a stored pixel has the colour.
bool isColor(const BitmapHandle& bitmap, uint32_t pixel, COLORREF color) {
  const int bits = bitmap.BitsPerPixel;
  if (bits <= 8) {
    if (color >> 24 == 1) return pixel == (color & ((1u << bits) - 1));
    const std::vector<PALETTEENTRY> colors = colorsOf(bitmap);
    for (uint32_t index = 0; index < colors.size(); ++index) {
      if (RGB(colors[index].peRed, colors[index].peGreen, colors[index].peBlue) == color) return pixel == index;
    }
    return false;
  }
  unsigned channels[3];
  if (bits == 16) {
    const unsigned word = pixel >> 8 | (pixel & 0xFF) << 8;
    for (int k = 0; k < 3; ++k) {
      const unsigned channel = word >> 5 * k & 31;
      channels[k] = channel << 3 | channel >> 2;
    }
  } else {
    for (int k = 0; k < 3; ++k) channels[k] = pixel >> (bits - 8 - 8 * k) & 0xFF;
  }
  if (bitmap.ColorOrder == ORDER_BLUE_FIRST) std::swap(channels[0], channels[2]);
  return RGB(channels[0], channels[1], channels[2]) == color;
}

TEST(RegionColor, FindsThePixelsOfEveryDepth) {
  std::mt19937 random(5);
  for (const int bits : allDepths) {
    unsigned found = 0;
    for (int width = 1; width <= 130; ++width) {
      SCOPED_TRACE(std::to_string(bits) + " bits, width " + std::to_string(width));
      TestBitmap bitmap(width, 3, bits);
      if (bits >= 16) bitmap.ColorOrder = width % 2;
      fillWithRuns(bitmap, random);
      const COLORREF white = RGB(255, 255, 255);
      COLORREF color = width % 3 == 0 || bits >= 16 ? white : 0x01FFFF01;
      if (bits >= 16 && width % 5 == 0) color = RGB(16, 255, 255);
      if (bits == 16 && width % 5 == 0) color = RGB(255, 255, 132);
      const Picture picture = pictureOf(bitmap);
      PointSet expected(width, 3);
      expected.fill([&](int x, int y) { return isColor(bitmap, picture.at(x, y), color); });
      ASSERT_EQ(Zv_SetBitmapRgnColor(&bitmap, color, CombineSet), KSUCCESS);
      found += expected.count();
      if (expected.empty()) {
        ASSERT_EQ(Zv_BitmapHasRgn(&bitmap), 0) << "a colour that is not there";
        continue;
      }
      ASSERT_TRUE(isWellFormed(bitmap));
      ASSERT_EQ(pointsOf(bitmap), expected);
    }
    EXPECT_GT(found, 100u) << bits << " bits";
  }
}

TEST(RegionColor, TakesTheFirstEqualEntryAndWorksOnEveryStorage) {
  RGBQUAD palette[16] = {};
  palette[3] = palette[7] = {10, 20, 30, 0};
  BitmapHandle bitmap{};
  ASSERT_EQ(Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 4, 1, 4, 0, palette, 1), KSUCCESS);
  const uint8_t row[4] = {0x37, 0x73};
  Zv_PutBitmapRow(&bitmap, row, 0, 4);
  EXPECT_EQ(Zv_SetBitmapRgnColor(&bitmap, RGB(30, 20, 10), CombineSet), KSUCCESS);
  EXPECT_TRUE(Zv_IsPtInBitmapRgn(&bitmap, 0, 0) && !Zv_IsPtInBitmapRgn(&bitmap, 0, 1));
  EXPECT_TRUE(!Zv_IsPtInBitmapRgn(&bitmap, 0, 2) && Zv_IsPtInBitmapRgn(&bitmap, 0, 3));
  const PointSet before = pointsOf(bitmap);
  EXPECT_EQ(Zv_SetBitmapRgnColor(&bitmap, RGB(1, 2, 3), CombineSet), KSUCCESS);
  EXPECT_EQ(pointsOf(bitmap), before) << "no such entry";
  Zv_FreeBitmap(&bitmap);

  TestBitmap runs(70, 2, 1, ALLOC_MEMORY | ALLOC_RUNLENGTH);
  std::mt19937 random(6);
  fillWithRuns(runs, random);
  const Picture picture = pictureOf(runs);
  PointSet expected(70, 2);
  expected.fill([&](int x, int y) { return picture.at(x, y) == 0; });
  ASSERT_EQ(Zv_SetBitmapRgnColor(&runs, 0x01000000, CombineSet), KSUCCESS);
  EXPECT_EQ(pointsOf(runs), expected);
}

TEST(RegionColor, BadArguments) {
  EXPECT_EQ(Zv_SetBitmapRgnColor(nullptr, 0, CombineSet), KERR_BAD_PARAMETER);
  BitmapHandle bare{};
  ASSERT_EQ(Zv_InitBitmap(&bare, 4, 4, 8), KSUCCESS);
  EXPECT_EQ(Zv_SetBitmapRgnColor(&bare, 0, CombineSet), KERR_BAD_BITMAP);
}

// A 1-bit mask with the given pixels.
void fillMask(BitmapHandle& mask, const PointSet& ones) {
  std::vector<uint8_t> row(mask.BytesPerLine);
  for (int y = 0; y < mask.Height; ++y) {
    for (auto& byte : row) byte = 0;
    for (int x = 0; x < mask.Width; ++x) {
      if (ones.has(x, y)) row[static_cast<size_t>(x / 8)] |= static_cast<uint8_t>(0x80 >> x % 8);
    }
    Zv_PutBitmapRow(&mask, row.data(), static_cast<unsigned>(y), mask.BytesPerLine);
  }
}

TEST(RegionMask, OneBitMasksByTheTargetsPalette) {
  std::mt19937 random(8);
  PointSet ones(20, 10);
  ones.fill([&](int, int) { return random() % 3 == 0; });
  const RGBQUAD ordinary[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  const RGBQUAD swapped[2] = {{255, 255, 255, 0}, {0, 0, 0, 0}};
  const RGBQUAD pale[2] = {{0, 0, 0, 0}, {250, 250, 250, 0}};
  for (const RGBQUAD* palette : {ordinary, swapped, pale}) {
    BitmapHandle mask{};
    ASSERT_EQ(Zv_CreateBitmap(&mask, ALLOC_MEMORY, 20, 10, 1, 0, palette, 1), KSUCCESS);
    fillMask(mask, ones);
    for (const bool grayTarget : {true, false}) {
      BitmapHandle target{};
      ASSERT_EQ(Zv_CreateBitmap(&target, ALLOC_MEMORY, 20, 10, grayTarget ? 0 : 24, 1, nullptr, 1), KSUCCESS);
      EXPECT_EQ(Zv_SetBitmapRgnFromMask(&target, nullptr, &mask, CombineSet), KSUCCESS);
      if (palette == pale && grayTarget) {
        // The mask's own palette has no white.
        EXPECT_EQ(Zv_BitmapHasRgn(&target), 0);
      } else {
        PointSet expected(20, 10);
        expected.fill([&](int x, int y) { return ones.has(x, y) == (palette != swapped); });
        EXPECT_EQ(pointsOf(target), expected);
        EXPECT_TRUE(isWellFormed(target));
      }
      Zv_FreeBitmap(&target);
    }
    Zv_FreeBitmap(&mask);
  }
}

TEST(RegionMask, DeeperMasksAndTransforms) {
  TestBitmap mask(6, 4, 24);
  std::vector<uint8_t> row(mask.BytesPerLine);
  for (unsigned x = 0; x < 6; ++x)
    row[3 * x] = row[3 * x + 1] = row[3 * x + 2] = static_cast<uint8_t>(x < 3 ? 90 : 200);
  for (unsigned y = 0; y < 4; ++y) Zv_PutBitmapRow(&mask, row.data(), y, mask.BytesPerLine);

  TestBitmap target(40, 30, 8);
  target.ViewPerspective = VIEW_BOTTOM_UP;
  const RegionXForm xform = {0, 2, 1, 3, 1, 1, 2};
  ASSERT_EQ(Zv_SetBitmapRgnFromMask(&target, &xform, &mask, CombineSet), KSUCCESS);
  PointSet expected(40, 30);
  expected.putRect({8, 30 - 18, 14, 30 - 6});
  EXPECT_EQ(pointsOf(target), expected);

  EXPECT_EQ(Zv_SetBitmapRgnFromMask(nullptr, nullptr, &mask, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnFromMask(&target, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  BitmapHandle bare{};
  ASSERT_EQ(Zv_InitBitmap(&bare, 4, 4, 1), KSUCCESS);
  EXPECT_EQ(Zv_SetBitmapRgnFromMask(&target, nullptr, &bare, CombineSet), KERR_BAD_PARAMETER);
}

TEST(RegionMask, OfARegionAndBack) {
  std::mt19937 random(10);
  for (const int memoryType : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
    TestBitmap bitmap(70, 20, 1, memoryType);
    bitmap.ViewPerspective = VIEW_TURNED_90;
    fillWithRuns(bitmap, random);
    TestBitmap whole;
    ASSERT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &whole), KSUCCESS);
    for (const uint32_t pixel : pictureOf(whole).pixels) ASSERT_EQ(pixel, 1u) << "no region";

    ASSERT_EQ(Zv_SetBitmapRgnColor(&bitmap, 0x01000001, CombineSet), KSUCCESS);
    TestBitmap mask;
    ASSERT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &mask), KSUCCESS);
    EXPECT_EQ(pictureOf(mask), pictureOf(bitmap));
    EXPECT_EQ(mask.ViewPerspective, VIEW_TURNED_90);
    EXPECT_EQ(mask.Region, nullptr);
    TestBitmap back(70, 20, 24);
    ASSERT_EQ(Zv_SetBitmapRgnFromMask(&back, nullptr, &mask, CombineSet), KSUCCESS);
    EXPECT_EQ(pointsOf(back), pointsOf(bitmap));

    const RECT all = {0, 0, 70, 20};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &all, CombineSetNot), KSUCCESS);
    TestBitmap none;
    ASSERT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &none), KSUCCESS);
    for (const uint32_t pixel : pictureOf(none).pixels) ASSERT_EQ(pixel, 0u) << "an empty region";
  }
}

TEST(RegionMask, CannotBeMade) {
  TestBitmap bitmap(70, 20, 8);
  TestBitmap mask;
  EXPECT_EQ(Zv_CreateMaskFromBitmapRgn(nullptr, &mask), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, nullptr), KERR_BAD_PARAMETER);
  {
    const ProgressLog log(1, 0);
    EXPECT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &mask), 0) << "stopped";
    EXPECT_FALSE(mask.allocated());
  }
}

}  // namespace
}  // namespace zavotest
