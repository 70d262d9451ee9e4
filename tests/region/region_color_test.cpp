// Regions from colours and masks, against looking at every pixel.
#include <string>
#include <utility>

#include "region/region_model.h"
#include "support/progress_log.h"

namespace zavotest {
namespace {

// Noise with long and short runs of a colour, or of colours that differ from it in a channel or a bit.
void fillWithRuns(BitmapHandle& bitmap, COLORREF color, std::mt19937& random) {
  fillWithNoise(bitmap, random);
  for (int i = 0; i < 12; ++i) {
    const auto left = static_cast<int>(random() % static_cast<unsigned>(bitmap.Width));
    const auto top = static_cast<int>(random() % static_cast<unsigned>(bitmap.Height));
    const auto length = static_cast<int>(random() % (random() % 2 != 0 ? 3 : 70)) + 1;
    const RECT run = {left, top, left + length, top + 1};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &run, CombineSet), KSUCCESS);
    const COLORREF other = color ^ (bitmap.BitsPerPixel <= 8 ? 1 : 0xEFu << 8 * (random() % 3));
    ASSERT_EQ(Zv_FillBitmap(&bitmap, random() % 3 != 0 ? color : other), KSUCCESS);
  }
  ASSERT_EQ(Zv_FreeBitmapRgn(&bitmap), KSUCCESS);
}

// The pixels of a colour: of the first equal entry in a palette.
PointSet pixelsOf(BitmapHandle& bitmap, COLORREF color) {
  const Picture picture = pictureOf(bitmap);
  PointSet set(bitmap.Width, bitmap.Height);
  if (bitmap.BitsPerPixel > 8) {
    set.fill([&](int x, int y) { return Zv_GetPixelColor(&bitmap, y, x) == color; });
    return set;
  }
  const std::vector<PALETTEENTRY> colors = colorsOf(bitmap);
  const auto entry = std::ranges::find_if(
      colors, [&](const PALETTEENTRY& one) { return RGB(one.peRed, one.peGreen, one.peBlue) == color; });
  const bool isIndex = color >> 24 == 1;
  const auto index = isIndex ? color % bitmap.ColorCount : static_cast<uint32_t>(entry - colors.begin());
  set.fill([&](int x, int y) { return picture.at(x, y) == index; });
  return set;
}

TEST(RegionColor, FindsThePixelsOfEveryDepth) {
  std::mt19937 random(5);
  for (const int bits : allDepths) {
    unsigned found = 0;
    for (int width = 1; width <= 130; ++width) {
      SCOPED_TRACE(std::to_string(bits) + " bits, width " + std::to_string(width));
      TestBitmap bitmap(width, 3, bits, width % 2 != 0 ? int{ALLOC_MEMORY} : ALLOC_MEMORY | ALLOC_RUNLENGTH);
      if (bits >= 16) bitmap.ColorOrder = width % 2;
      COLORREF color = 0x01FFFF01;
      if (bits <= 8 && width % 3 == 0) {
        // The first of equal entries counts; or a colour that no entry has.
        giveRandomPalette(bitmap, random);
        RGBQUAD entry = {};
        Zv_GetPaletteEntries(bitmap.Palette, 1, 1, &entry);
        if (width % 4 == 0) Zv_SetPaletteEntries(bitmap.Palette, bitmap.ColorCount - 1, 1, &entry);
        if (width % 4 == 1) Zv_SetPaletteEntries(bitmap.Palette, 0, 1, &entry);
        color = RGB(entry.rgbRed, entry.rgbGreen, entry.rgbBlue ^ (width % 4 == 2 ? 1 : 0));
      }
      if (bits >= 16) color = width % 5 != 0 ? RGB(255, 255, 255) : bits == 16 ? RGB(255, 255, 132) : RGB(16, 255, 255);
      fillWithRuns(bitmap, bits <= 8 ? 0x01000001 : color, random);
      PointSet expected = pixelsOf(bitmap, color);
      found += expected.count();
      const RECT corner = {0, 0, 1, 1};
      ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &corner, CombineSet), KSUCCESS);
      if (expected.empty()) expected.put(0, 0);  // a colour that is not there changes nothing
      ASSERT_EQ(Zv_SetBitmapRgnColor(&bitmap, color, CombineSet), KSUCCESS);
      ASSERT_TRUE(isWellFormed(bitmap));
      ASSERT_EQ(pointsOf(bitmap), expected);
    }
    EXPECT_GT(found, 100u) << bits << " bits";
  }
}

TEST(RegionMask, OneBitMasksByTheTargetsPalette) {
  std::mt19937 random(8);
  const RGBQUAD ordinary[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  const RGBQUAD swapped[2] = {{255, 255, 255, 0}, {0, 0, 0, 0}};
  const RGBQUAD pale[2] = {{0, 0, 0, 0}, {250, 250, 250, 0}};
  for (const RGBQUAD* palette : {ordinary, swapped, pale, static_cast<const RGBQUAD*>(nullptr)}) {
    for (const int targetBits : {0, 24}) {  // 0 bits: 8 bits of grey
      TestBitmap mask, target;
      ASSERT_EQ(Zv_CreateBitmap(&mask, targetBits == 0 ? ALLOC_MEMORY : ALLOC_RUNLENGTH, 20, 10, 1, 0, palette, 1),
                KSUCCESS);
      if (palette == nullptr) DeleteObject(std::exchange(mask.Palette, nullptr));
      ASSERT_EQ(Zv_CreateBitmap(&target, ALLOC_MEMORY, 20, 10, targetBits, 1, nullptr, 1), KSUCCESS);
      fillWithNoise(mask, random);
      EXPECT_EQ(Zv_SetBitmapRgnFromMask(&target, nullptr, &mask, CombineSet), KSUCCESS);
      // A grey target looks for white in the mask's own palette.
      const bool isFound = palette != pale || targetBits != 0;
      EXPECT_EQ(Zv_BitmapHasRgn(&target), isFound ? 1 : 0);
      if (!isFound) continue;
      const Picture picture = pictureOf(mask);
      PointSet expected(20, 10);
      expected.fill([&](int x, int y) { return picture.at(x, y) == (palette == swapped ? 0u : 1u); });
      EXPECT_EQ(pointsOf(target), expected);
      EXPECT_TRUE(isWellFormed(target));
    }
  }
}

TEST(RegionMask, DeeperMasksAndTransforms) {
  TestBitmap mask(6, 4, 24);
  std::vector<uint8_t> row(mask.BytesPerLine);
  for (size_t i = 0; i < 18; ++i) row[i] = i < 9 ? 90 : 200;
  for (unsigned y = 0; y < 4; ++y) Zv_PutBitmapRow(&mask, row.data(), y, mask.BytesPerLine);
  RegionBitmap target(40, 30, VIEW_BOTTOM_UP, 8);
  const RegionXForm xform = {0, 2, 1, 3, 1, 1, 2};
  ASSERT_EQ(Zv_SetBitmapRgnFromMask(&target, &xform, &mask, CombineSet), KSUCCESS);
  PointSet expected(40, 30);
  expected.putRect({8, 30 - 18, 14, 30 - 6});
  EXPECT_EQ(pointsOf(target), expected);
}

TEST(RegionMask, OfARegionAndBack) {
  std::mt19937 random(10);
  enum Kind { none, scattered, empty };
  for (const Kind kind : {none, scattered, empty}) {
    SCOPED_TRACE("kind " + std::to_string(kind));
    RegionBitmap bitmap(70, 20, VIEW_TURNED_90);
    fillWithRuns(bitmap, 0x01000001, random);
    const RECT all = {0, 0, 70, 20};
    if (kind == scattered) Zv_SetBitmapRgnColor(&bitmap, 0x01000001, CombineSet);
    if (kind == empty) Zv_SetBitmapRgnRect(&bitmap, nullptr, &all, CombineSetNot);
    TestBitmap mask, back(70, 20, 24);
    ASSERT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &mask), KSUCCESS);
    EXPECT_EQ(mask.ViewPerspective, VIEW_TURNED_90);
    EXPECT_EQ(mask.Region, nullptr);
    const Picture picture = pictureOf(mask);
    PointSet ones(70, 20);
    ones.fill([&](int x, int y) { return picture.at(x, y) == 1; });
    EXPECT_EQ(ones, pointsOf(bitmap));
    ASSERT_EQ(Zv_SetBitmapRgnFromMask(&back, nullptr, &mask, CombineSet), KSUCCESS);
    EXPECT_EQ(Zv_BitmapHasRgn(&back), kind == empty ? 0 : 1);
    if (kind != empty) {
      EXPECT_EQ(pointsOf(back), ones);
    }
  }
}

TEST(RegionColor, BadArguments) {
  TestBitmap bitmap(70, 20, 8), mask;
  BitmapHandle bare{};
  ASSERT_EQ(Zv_InitBitmap(&bare, 4, 4, 8), KSUCCESS);
  EXPECT_EQ(Zv_SetBitmapRgnColor(nullptr, 0, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnColor(&bare, 0, CombineSet), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_SetBitmapRgnFromMask(nullptr, nullptr, &bitmap, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnFromMask(&bitmap, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnFromMask(&bitmap, nullptr, &bare, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CreateMaskFromBitmapRgn(nullptr, &mask), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, nullptr), KERR_BAD_PARAMETER);
  const ProgressLog log(1, 0);
  EXPECT_EQ(Zv_CreateMaskFromBitmapRgn(&bitmap, &mask), 0) << "stopped";
  EXPECT_FALSE(mask.allocated());
}

}  // namespace
}  // namespace zavotest
