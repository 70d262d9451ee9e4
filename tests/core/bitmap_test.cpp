// Describing, creating and freeing bitmaps.
#include <zavo.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

#include "support/platform_watch.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

TEST(InitBitmap, FillsTheRecord) {
  for (int bits = -1; bits <= 33; ++bits) {
    SCOPED_TRACE(testing::Message() << bits << " bits");
    BitmapHandle expected{}, bitmap;
    memset(&bitmap, 0xFF, sizeof bitmap);
    const bool supported = std::count(std::begin(allDepths), std::end(allDepths), bits) != 0;
    EXPECT_EQ(Zv_InitBitmap(&bitmap, 33, 7, bits), supported ? KSUCCESS : KERR_BAD_BPP);
    if (supported) {
      expected.Width = 33;
      expected.Height = 7;
      expected.BitsPerPixel = bits;
      expected.BytesPerLine = (33u * static_cast<unsigned>(bits) + 31) / 32 * 4;
      expected.DataSize = 7 * expected.BytesPerLine;
      expected.ColorCount = bits <= 8 ? 1u << bits : 0;
      expected.ColorOrder = bits <= 8 ? 0 : ORDER_BLUE_FIRST;
      expected.ViewPerspective = VIEW_BOTTOM_UP;
      expected.DitheringMethod = 7;
      expected.XResolution = expected.YResolution = 150;
    }
    EXPECT_EQ(memcmp(&bitmap, &expected, sizeof bitmap), 0);
  }
  EXPECT_EQ(Zv_InitBitmap(nullptr, 20, 10, 16), KERR_BAD_BITMAP);
}

TEST(CreateBitmap, PaletteOrderAndPerspective) {
  RGBQUAD reds[256] = {};
  for (unsigned i = 0; i < 256; ++i) reds[i].rgbRed = static_cast<BYTE>(255 - i);
  const struct {
    int bits, colorOrder;
    const RGBQUAD* palette;
    int depth, expectedOrder;
    size_t colors;
    COLORREF second;  // colour 1
  } cases[] = {{0, 1, nullptr, 8, 0, 256, RGB(1, 1, 1)},
               {0, 1, reds, 8, 0, 256, RGB(1, 1, 1)},
               {3, 1, reds, 3, 0, 8, RGB(254, 0, 0)},
               {1, 1, nullptr, 1, 0, 2, RGB(255, 255, 255)},
               {16, 0, reds, 16, 0, 0, 0},
               {24, 1, nullptr, 24, 1, 0, 0},
               {32, 5, nullptr, 32, 5, 0, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bits);
    TestBitmap bitmap;
    ASSERT_EQ(Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 9, 4, c.bits, c.colorOrder, c.palette, 77), KSUCCESS);
    EXPECT_EQ(bitmap.BitsPerPixel, c.depth);
    EXPECT_EQ(bitmap.ColorOrder, c.expectedOrder);
    EXPECT_EQ(bitmap.ViewPerspective, 77);
    const auto colors = colorsOf(bitmap);
    ASSERT_EQ(colors.size(), c.colors);
    if (c.colors == 0) continue;
    EXPECT_EQ(RGB(colors[1].peRed, colors[1].peGreen, colors[1].peBlue), c.second);
  }
}

TEST(CreateBitmap, FailuresLeaveNoStorage) {
  TestBitmap bitmap;
  EXPECT_EQ(Zv_CreateBitmap(nullptr, ALLOC_MEMORY, 9, 4, 8, 0, nullptr, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 9, 4, 9, 0, nullptr, 1), KERR_BAD_BPP);
  EXPECT_EQ(Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 0, 4, 8, 0, nullptr, 1), KERR_EMPTY);
  EXPECT_EQ(Zv_CreateBitmap(&bitmap, 3, 9, 4, 8, 0, nullptr, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(bitmap.Width, 9);
  EXPECT_FALSE(bitmap.allocated());
  const Refusal refusal("CreatePalette", 1);
  EXPECT_EQ(Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 9, 4, 8, 0, nullptr, 1), KSUCCESS) << "it goes without a palette";
  EXPECT_NE(refusal.refused(), nullptr);
  EXPECT_EQ(bitmap.Palette, nullptr);
}

TEST(FreeBitmap, DeletesAttachmentsUnlessToldOtherwise) {
  TestBitmap bitmap(9, 4, 8);
  HPALETTE palette = bitmap.Palette;
  EXPECT_EQ(Zv_FreeImage(&bitmap, 0), KSUCCESS);
  EXPECT_FALSE(bitmap.allocated());
  EXPECT_EQ(bitmap.Palette, nullptr);
  bitmap.Palette = palette;
  EXPECT_EQ(Zv_FreeImage(&bitmap, 1), KSUCCESS) << "nothing to do without storage";
  EXPECT_EQ(GetObjectType(palette), DWORD{OBJ_PAL});
  Zv_FreeBitmap(&bitmap);
  EXPECT_EQ(GetObjectType(palette), 0u) << "kept though its bitmap was freed";
  ASSERT_EQ(Zv_AllocateBitmap(&bitmap, ALLOC_MEMORY), KSUCCESS) << "it can be allocated again";
  bitmap.Palette = Zv_CreateGrayPalette(8);
  EXPECT_EQ(Zv_FreeImage(&bitmap, 1), KSUCCESS);
  EXPECT_EQ(bitmap.Palette, nullptr);
  EXPECT_EQ(Zv_FreeImage(nullptr, 1), KSUCCESS);
  Zv_FreeBitmap(nullptr);
}

}  // namespace
