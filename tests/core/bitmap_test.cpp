// Describing, creating and freeing bitmaps.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>

#include "support/platform_watch.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

TEST(InitBitmap, RowsArePaddedToFourBytes) {
  const struct {
    int width, bits;
    unsigned rowBytes;
  } cases[] = {{1, 1, 4}, {33, 1, 8}, {3, 24, 12}, {11, 3, 8}, {1, 32, 4}, {3, 16, 8}, {5, 7, 8}};
  for (const auto& c : cases) {
    BitmapHandle bitmap;
    ASSERT_EQ(Zv_InitBitmap(&bitmap, c.width, 7, c.bits), KSUCCESS);
    EXPECT_EQ(bitmap.BytesPerLine, c.rowBytes) << c.width << " pixels of " << c.bits << " bits";
    EXPECT_EQ(bitmap.DataSize, 7 * c.rowBytes);
  }
}

TEST(InitBitmap, UnsupportedDepthLeavesTheRecordZero) {
  for (const int bits : {-1, 0, 9, 15, 17, 25, 33}) {
    BitmapHandle bitmap;
    memset(&bitmap, 0xFF, sizeof bitmap);
    EXPECT_EQ(Zv_InitBitmap(&bitmap, 10, 10, bits), KERR_BAD_BPP);
    const BitmapHandle zero{};
    EXPECT_EQ(memcmp(&bitmap, &zero, sizeof bitmap), 0);
  }
}

TEST(InitBitmap, FillsTheRecord) {
  BitmapHandle bitmap;
  ASSERT_EQ(Zv_InitBitmap(&bitmap, 20, 10, 4), KSUCCESS);
  BitmapHandle expected{};
  expected.Width = 20;
  expected.Height = 10;
  expected.BitsPerPixel = 4;
  expected.BytesPerLine = 12;
  expected.DataSize = 120;
  expected.ColorCount = 16;
  expected.ViewPerspective = VIEW_BOTTOM_UP;
  expected.DitheringMethod = 7;
  expected.XResolution = expected.YResolution = 150;
  EXPECT_EQ(memcmp(&bitmap, &expected, sizeof bitmap), 0);
  ASSERT_EQ(Zv_InitBitmap(&bitmap, 20, 10, 16), KSUCCESS);
  EXPECT_EQ(bitmap.ColorCount, 0u);
  EXPECT_EQ(bitmap.ColorOrder, ORDER_BLUE_FIRST);
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
    RGBQUAD second;  // colour 1: blue, green, red
  } cases[] = {{0, 1, nullptr, 8, 0, 256, {1, 1, 1, 0}},
               {0, 1, reds, 8, 0, 256, {1, 1, 1, 0}},
               {8, 1, reds, 8, 0, 256, {0, 0, 254, 0}},
               {3, 1, reds, 3, 0, 8, {0, 0, 254, 0}},
               {1, 1, nullptr, 1, 0, 2, {255, 255, 255, 0}},
               {16, 0, reds, 16, 0, 0, {}},
               {24, 1, nullptr, 24, 1, 0, {}},
               {32, 5, nullptr, 32, 5, 0, {}}};
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
    EXPECT_EQ(RGB(colors[1].peRed, colors[1].peGreen, colors[1].peBlue),
              RGB(c.second.rgbRed, c.second.rgbGreen, c.second.rgbBlue));
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

TEST(FreeBitmap, DeletesThePaletteOfAnUnallocatedBitmapToo) {
  TestBitmap bitmap(9, 4, 8);
  Zv_FreeBitmap(&bitmap);
  EXPECT_FALSE(bitmap.allocated());
  EXPECT_EQ(bitmap.Palette, nullptr);
  bitmap.Palette = Zv_CreateGrayPalette(8);
  Zv_FreeBitmap(&bitmap);
  EXPECT_EQ(bitmap.Palette, nullptr);
  Zv_FreeBitmap(nullptr);
  ASSERT_EQ(Zv_AllocateBitmap(&bitmap, ALLOC_MEMORY), KSUCCESS) << "it can be allocated again";
}

TEST(FreeImage, LeavesAttachmentsToTheCallerWhenAsked) {
  TestBitmap bitmap(9, 4, 8);
  HPALETTE palette = bitmap.Palette;
  EXPECT_EQ(Zv_FreeImage(&bitmap, 0), KSUCCESS);
  EXPECT_FALSE(bitmap.allocated());
  EXPECT_EQ(bitmap.Palette, nullptr);
  bitmap.Palette = palette;
  EXPECT_EQ(Zv_FreeImage(&bitmap, 1), KSUCCESS) << "nothing to do without storage";
  EXPECT_EQ(GetObjectType(bitmap.Palette), DWORD{OBJ_PAL});

  TestBitmap whole(9, 4, 8);
  palette = whole.Palette;
  EXPECT_EQ(Zv_FreeImage(&whole, 1), KSUCCESS);
  EXPECT_EQ(GetObjectType(palette), 0u);
  EXPECT_EQ(Zv_FreeImage(nullptr, 1), KSUCCESS);
}

TEST(VersionInfo, FixedLayout) {
  uint8_t expected[104] = {};
  memcpy(expected, "VANTRIXOS\xAE DLL for Win32", 24);
  expected[64] = 8;
  memcpy(expected + 72, "Nov 18 1997", 11);
  memcpy(expected + 88, "11:18:37", 8);
  VersionRecord record;
  memset(&record, 0xFF, sizeof record);
  ASSERT_EQ(Zv_VersionInfo(&record), KSUCCESS);
  ASSERT_EQ(sizeof record, sizeof expected);
  EXPECT_EQ(memcmp(&record, expected, sizeof expected), 0);
  EXPECT_EQ(Zv_VersionInfo(nullptr), KERR_BAD_PARAMETER);
}

}  // namespace
