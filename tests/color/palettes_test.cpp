// Fixed, grey and system palettes, palette objects, and the colours of a bitmap.
#include <zavo.h>

#include <gtest/gtest.h>
#include <vector>

#include "core/owners.h"

namespace {

using zavo::OwnedBitmap;
using zavo::PaletteObject;

struct Rgb {
  int red, green, blue;
  bool operator==(const Rgb&) const = default;
};

Rgb rgb(const RGBQUAD& color) {
  return {color.rgbRed, color.rgbGreen, color.rgbBlue};
}

RGBQUAD quad(int red, int green, int blue, int reserved = 0) {
  return {static_cast<BYTE>(blue), static_cast<BYTE>(green), static_cast<BYTE>(red), static_cast<BYTE>(reserved)};
}

std::vector<RGBQUAD> entries(HPALETTE palette) {
  std::vector<RGBQUAD> colors(Zv_GetPaletteSize(palette));
  EXPECT_EQ(Zv_GetPaletteEntries(palette, 0, static_cast<unsigned>(colors.size()), colors.data()), colors.size());
  return colors;
}

std::vector<RGBQUAD> grays(std::initializer_list<int> levels) {
  std::vector<RGBQUAD> colors;
  for (const int level : levels) colors.push_back(quad(level, level, level));
  return colors;
}

TEST(FixedPalette, EntriesOfEachDepth) {
  const struct {
    int bits, index;
    Rgb color;
  } cases[] = {
      {1, 0, {0, 0, 0}},          {1, 1, {255, 255, 255}},   {2, 1, {85, 85, 85}},       {2, 2, {170, 170, 170}},
      {3, 1, {0, 0, 255}},        {3, 4, {255, 0, 0}},       {3, 6, {255, 255, 0}},      {4, 1, {128, 0, 0}},
      {4, 6, {0, 128, 128}},      {4, 7, {128, 128, 128}},   {4, 8, {192, 192, 192}},    {4, 9, {255, 0, 0}},
      {4, 12, {0, 0, 255}},       {4, 15, {255, 255, 255}},  {5, 1, {0, 0, 255}},        {5, 2, {0, 85, 0}},
      {5, 8, {85, 0, 0}},         {5, 31, {255, 255, 255}},  {6, 1, {0, 0, 85}},         {6, 36, {170, 85, 0}},
      {7, 4, {0, 36, 0}},         {7, 12, {0, 109, 0}},      {7, 96, {255, 0, 0}},       {8, 3, {0, 0, 255}},
      {8, 4, {0, 36, 0}},         {8, 0x48, {73, 73, 0}},    {8, 0x92, {146, 146, 170}}, {8, 0xB6, {182, 182, 170}},
      {8, 0xDB, {219, 219, 255}}, {8, 255, {255, 255, 255}},
  };
  for (const auto& c : cases) {
    const RGBQUAD* palette = Zv_IntGetFixedPalette(c.bits);
    ASSERT_NE(palette, nullptr);
    EXPECT_EQ(rgb(palette[c.index]), c.color) << c.bits << " bits, entry " << c.index;
    EXPECT_EQ(palette[c.index].rgbReserved, 0);
  }
  for (const int bits : {-1, 0, 9, 16}) EXPECT_EQ(Zv_IntGetFixedPalette(bits), nullptr);
}

TEST(FixedPalette, EveryEntryIsDistinct) {
  for (int bits = 1; bits <= 8; ++bits) {
    const RGBQUAD* palette = Zv_IntGetFixedPalette(bits);
    const auto count = 1u << bits;
    for (unsigned i = 0; i < count; ++i) {
      EXPECT_EQ(Zv_FindPaletteIndex(palette, count, palette[i].rgbRed, palette[i].rgbGreen, palette[i].rgbBlue), i);
    }
  }
}

TEST(FixedPalette, CopiesStopAtTheDepthsEntries) {
  for (int bits = 0; bits <= 8; ++bits) {
    std::vector<RGBQUAD> colors(257, quad(1, 2, 3, 4));
    EXPECT_EQ(Zv_GetFixedPalette(colors.data(), bits), KSUCCESS);
    const unsigned count = bits == 0 ? 256 : 1u << bits;
    EXPECT_EQ(rgb(colors[count - 1]), (Rgb{255, 255, 255}));
    EXPECT_EQ(rgb(colors[count]), (Rgb{1, 2, 3})) << bits;
  }
  RGBQUAD grayRamp[256];
  EXPECT_EQ(Zv_GetFixedPalette(grayRamp, 0), KSUCCESS);
  for (int v = 0; v < 256; ++v) EXPECT_EQ(rgb(grayRamp[v]), (Rgb{v, v, v}));
  EXPECT_EQ(Zv_GetFixedPalette(grayRamp, 9), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetFixedPalette(grayRamp, -1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetFixedPalette(nullptr, 8), KERR_BAD_PARAMETER);
}

TEST(FixedPalette, Objects) {
  const PaletteObject blackAndWhite(Zv_CreateFixedPalette(0));
  EXPECT_EQ(entries(blackAndWhite.get()).size(), 2u);
  for (int bits = 1; bits <= 8; ++bits) {
    const PaletteObject palette(Zv_CreateFixedPalette(bits));
    EXPECT_EQ(Zv_GetPaletteSize(palette.get()), 1u << bits);
    EXPECT_EQ(Zv_CompareHandleToPalette(palette.get(), Zv_IntGetFixedPalette(bits), 256), 1);
  }
  EXPECT_EQ(Zv_CreateFixedPalette(9), nullptr);
  EXPECT_EQ(Zv_CreateFixedPalette(-1), nullptr);
}

TEST(GrayPalette, LevelsAreRoundedDown) {
  const struct {
    int bits;
    unsigned count, index;
    int level;
  } cases[] = {{1, 2, 1, 255},     {3, 8, 2, 72},      {3, 8, 7, 255},  {4, 16, 1, 17}, {0, 256, 77, 77},
               {8, 256, 200, 200}, {9, 512, 300, 149}, {33, 2, 1, 255}, {32, 1, 0, 0},  {15, 32768, 32767, 255}};
  for (const auto& c : cases) {
    const PaletteObject palette(Zv_CreateGrayPalette(c.bits));
    const std::vector<RGBQUAD> colors = entries(palette.get());
    ASSERT_EQ(colors.size(), c.count) << c.bits;
    EXPECT_EQ(rgb(colors[c.index]), (Rgb{c.level, c.level, c.level})) << c.bits;
  }
  for (const int bits : {16, 31, -1}) EXPECT_EQ(Zv_CreateGrayPalette(bits), nullptr) << bits;
}

TEST(PaletteObjects, KeepColoursAndFlags) {
  const RGBQUAD colors[] = {quad(1, 2, 3, 0), quad(200, 100, 50, 1), quad(7, 8, 9, 4)};
  const PaletteObject palette(Zv_CreatePalette(colors, 3));
  PALETTEENTRY entry{};
  EXPECT_EQ(GetPaletteEntries(palette.get(), 1, 1, &entry), 1u);
  EXPECT_EQ((Rgb{entry.peRed, entry.peGreen, entry.peBlue}), (Rgb{200, 100, 50}));
  EXPECT_EQ(entry.peFlags, 1);
  EXPECT_EQ(entries(palette.get())[2].rgbReserved, 4);

  const PaletteObject copy(Zv_DupPalette(palette.get()));
  EXPECT_NE(copy.get(), palette.get());
  const RGBQUAD changed = quad(11, 12, 13);
  EXPECT_EQ(Zv_SetPaletteEntries(palette.get(), 2, 1, &changed), 1u);
  EXPECT_EQ(rgb(entries(palette.get())[2]), (Rgb{11, 12, 13}));
  EXPECT_EQ(Zv_CompareHandleToPalette(copy.get(), colors, 3), 1);
  EXPECT_EQ(Zv_CompareHandleToPalette(palette.get(), colors, 3), 0);
  EXPECT_EQ(Zv_CompareHandleToPalette(palette.get(), colors, 2), 1);
}

TEST(PaletteObjects, CountsAreCutAtTheEnd) {
  std::vector<RGBQUAD> colors(600);
  for (int i = 0; i < 600; ++i) colors[static_cast<size_t>(i)] = quad(i & 255, i >> 8, 5);
  const PaletteObject palette(Zv_CreatePalette(colors.data(), 600));
  std::vector<RGBQUAD> read(601, quad(9, 9, 9));
  EXPECT_EQ(Zv_GetPaletteEntries(palette.get(), 0, 601, read.data()), 600u);
  EXPECT_EQ(rgb(read[599]), rgb(colors[599]));
  EXPECT_EQ(rgb(read[600]), (Rgb{9, 9, 9}));
  EXPECT_EQ(Zv_GetPaletteEntries(palette.get(), 598, 0xFFFFFFFF, read.data()), 2u);
  EXPECT_EQ(rgb(read[1]), rgb(colors[599]));
  EXPECT_EQ(Zv_SetPaletteEntries(palette.get(), 300, 400, colors.data()), 300u);
  EXPECT_EQ(rgb(entries(palette.get())[599]), rgb(colors[299]));
  for (const unsigned first : {600u, 0xFFFFFFFFu}) {
    read[0] = quad(9, 9, 9);
    EXPECT_EQ(Zv_GetPaletteEntries(palette.get(), first, 2, read.data()), 0u);
    EXPECT_EQ(rgb(read[0]), (Rgb{9, 9, 9}));
    EXPECT_EQ(Zv_SetPaletteEntries(palette.get(), first, 2, colors.data()), 0u);
  }
}

TEST(PaletteObjects, Nulls) {
  RGBQUAD color = quad(1, 2, 3);
  EXPECT_EQ(Zv_CreatePalette(nullptr, 2), nullptr);
  EXPECT_EQ(Zv_CreatePalette(&color, 0), nullptr);
  EXPECT_EQ(Zv_CreatePalette(&color, 65536), nullptr);
  EXPECT_EQ(Zv_GetPaletteSize(nullptr), 0u);
  EXPECT_EQ(Zv_GetPaletteEntries(nullptr, 0, 1, &color), 0u);
  EXPECT_EQ(rgb(color), (Rgb{1, 2, 3}));
  EXPECT_EQ(Zv_SetPaletteEntries(nullptr, 0, 1, &color), 0u);
  EXPECT_EQ(Zv_DupPalette(nullptr), nullptr);
  EXPECT_EQ(Zv_CompareHandleToPalette(nullptr, &color, 1), 1);
}

TEST(SystemPalette, ExistsOnPaletteDevicesOnly) {
  const zavo::ScreenDC screen;
  const PaletteObject palette(Zv_CreateSystemPalette());
  const bool device = (GetDeviceCaps(screen.get(), RASTERCAPS) & RC_PALETTE) != 0;
  const auto size = static_cast<unsigned>(GetDeviceCaps(screen.get(), SIZEPALETTE));
  EXPECT_EQ(Zv_GetPaletteSize(palette.get()), device ? size : 0);
}

TEST(CreateBitmap, GetsItsPalette) {
  const RGBQUAD given[] = {quad(1, 2, 3), quad(4, 5, 6), quad(7, 8, 9), quad(10, 11, 12)};
  {
    OwnedBitmap bitmap;
    ASSERT_EQ(Zv_CreateBitmap(bitmap.get(), ALLOC_MEMORY, 5, 5, 2, 0, given, VIEW_UPRIGHT), KSUCCESS);
    EXPECT_EQ(Zv_CompareHandleToPalette(bitmap->Palette, given, 4), 1);
    EXPECT_EQ(Zv_GetPaletteSize(bitmap->Palette), 4u);
  }
  {
    OwnedBitmap bitmap;
    ASSERT_EQ(Zv_CreateBitmap(bitmap.get(), ALLOC_MEMORY, 5, 5, 0, 1, given, VIEW_UPRIGHT), KSUCCESS);
    EXPECT_EQ(bitmap->BitsPerPixel, 8);
    EXPECT_EQ(bitmap->ColorOrder, 0);
    EXPECT_EQ(Zv_IsGrayScaleBitmap(bitmap.get()), 1);
    EXPECT_EQ(Zv_GetPaletteSize(bitmap->Palette), 256u);
  }
  for (int bits = 1; bits <= 8; ++bits) {
    OwnedBitmap bitmap;
    ASSERT_EQ(Zv_CreateBitmap(bitmap.get(), ALLOC_MEMORY, 5, 5, bits, 0, nullptr, VIEW_UPRIGHT), KSUCCESS);
    EXPECT_EQ(Zv_GetPaletteSize(bitmap->Palette), 1u << bits);
    EXPECT_EQ(Zv_CompareHandleToPalette(bitmap->Palette, Zv_IntGetFixedPalette(bits), 256), 1);
  }
  for (const int bits : {16, 24, 32}) {
    OwnedBitmap bitmap;
    ASSERT_EQ(Zv_CreateBitmap(bitmap.get(), ALLOC_MEMORY, 5, 5, bits, 0, given, VIEW_UPRIGHT), KSUCCESS);
    EXPECT_EQ(bitmap->Palette, nullptr);
    EXPECT_EQ(bitmap->ColorOrder, ORDER_RED_FIRST);
  }
}

TEST(CreateBitmapFixedPalette, RefusesOtherCounts) {
  for (const unsigned count : {0u, 1u, 3u, 255u, 512u}) {
    BitmapHandle bitmap{};
    bitmap.ColorCount = count;
    EXPECT_EQ(Zv_CreateBitmapFixedPalette(&bitmap), 0);
    EXPECT_EQ(bitmap.Palette, nullptr);
  }
  EXPECT_EQ(Zv_CreateBitmapFixedPalette(nullptr), 0);
}

// A bitmap record with a palette and without pixels.
class PaletteBitmap {
 public:
  PaletteBitmap(int bits, const std::vector<RGBQUAD>& colors) {
    Zv_InitBitmap(bitmap_.get(), 4, 4, bits);
    bitmap_->ColorCount = static_cast<unsigned>(colors.size());
    bitmap_->Palette = Zv_CreatePalette(colors.data(), bitmap_->ColorCount);
  }
  BitmapHandle* get() { return bitmap_.get(); }

 private:
  OwnedBitmap bitmap_;
};

TEST(IsGrayScaleBitmap, TellsRampsFromOtherGrays) {
  std::vector<RGBQUAD> ramp16, falling16, ramp256;
  for (int i = 0; i < 16; ++i) ramp16.push_back(quad(17 * i, 17 * i, 17 * i));
  falling16.assign(ramp16.rbegin(), ramp16.rend());
  for (int i = 0; i < 256; ++i) ramp256.push_back(quad(i, i, i));
  std::vector<RGBQUAD> changed256 = ramp256, colored256 = ramp256;
  changed256[100] = quad(99, 99, 99);
  colored256[255] = quad(255, 255, 254);

  const struct {
    const char* what;
    int bits;
    std::vector<RGBQUAD> colors;
    int kind;
  } cases[] = {{"rising", 4, ramp16, 1},
               {"falling", 4, falling16, 2},
               {"256 rising", 8, ramp256, 1},
               {"one grey off", 8, changed256, 3},
               {"last entry coloured", 8, colored256, 0},
               {"eight rounded", 3, grays({0, 36, 73, 109, 146, 182, 219, 255}), 3},
               {"eight with the truncated step", 3, grays({0, 36, 72, 108, 144, 180, 216, 252}), 1},
               {"eight falling with the truncated step", 3, grays({255, 219, 183, 147, 111, 75, 39, 3}), 2},
               {"black and white", 1, grays({0, 255}), 1},
               {"one black", 1, grays({0}), 1},
               {"one white", 1, grays({255}), 2},
               {"one grey", 1, grays({7}), 3}};
  for (const auto& c : cases) {
    PaletteBitmap bitmap(c.bits, c.colors);
    EXPECT_EQ(Zv_IsGrayScaleBitmap(bitmap.get()), c.kind) << c.what;
  }

  const PaletteObject gray8(Zv_CreateGrayPalette(3));
  PaletteBitmap eightGrays(3, entries(gray8.get()));
  EXPECT_EQ(Zv_IsGrayScaleBitmap(eightGrays.get()), 3);

  PaletteBitmap tooFew(4, ramp16);
  tooFew.get()->ColorCount = 17;
  EXPECT_EQ(Zv_IsGrayScaleBitmap(tooFew.get()), 0);
  PaletteBitmap deep(4, ramp16);
  deep.get()->BitsPerPixel = 16;
  EXPECT_EQ(Zv_IsGrayScaleBitmap(deep.get()), 0);
  EXPECT_EQ(Zv_IsGrayScaleBitmap(nullptr), 0);
}

TEST(BitmapColors, ReadsAllOrNothing) {
  PaletteBitmap bitmap(2, grays({10, 20, 30, 40}));
  RGBQUAD colors[4] = {};
  EXPECT_EQ(Zv_GetBitmapColors(bitmap.get(), 1, 3, colors), KSUCCESS);
  EXPECT_EQ(rgb(colors[0]), (Rgb{20, 20, 20}));
  EXPECT_EQ(rgb(colors[2]), (Rgb{40, 40, 40}));
  colors[0] = quad(9, 9, 9);
  const struct {
    int first;
    unsigned count;
  } refused[] = {{0, 0}, {0, 5}, {2, 3}, {4, 1}, {-1, 1}, {1, 0xFFFFFFFF}};
  for (const auto& c : refused) {
    EXPECT_EQ(Zv_GetBitmapColors(bitmap.get(), c.first, c.count, colors), KERR_BAD_PARAMETER) << c.first;
    EXPECT_EQ(rgb(colors[0]), (Rgb{9, 9, 9}));
  }
  EXPECT_EQ(Zv_GetBitmapColors(nullptr, 0, 1, colors), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapColors(bitmap.get(), 0, 1, nullptr), KERR_BAD_PARAMETER);
  bitmap.get()->BitsPerPixel = 24;
  EXPECT_EQ(Zv_GetBitmapColors(bitmap.get(), 0, 1, colors), KERR_BAD_PARAMETER);
}

TEST(BitmapColors, WritesIntoANewPalette) {
  OwnedBitmap bitmap;
  ASSERT_EQ(Zv_CreateBitmap(bitmap.get(), ALLOC_MEMORY, 3, 3, 2, 0, nullptr, VIEW_UPRIGHT), KSUCCESS);
  const RGBQUAD colors[] = {quad(1, 2, 3, 4), quad(5, 6, 7)};
  EXPECT_EQ(Zv_PutBitmapColors(bitmap.get(), 2, 2, colors), KSUCCESS);
  const std::vector<RGBQUAD> now = entries(bitmap->Palette);
  ASSERT_EQ(now.size(), 4u);
  EXPECT_EQ(rgb(now[1]), (Rgb{85, 85, 85}));
  EXPECT_EQ(rgb(now[2]), (Rgb{1, 2, 3}));
  EXPECT_EQ(now[2].rgbReserved, 4);
  EXPECT_EQ(rgb(now[3]), (Rgb{5, 6, 7}));

  const HPALETTE before = bitmap->Palette;
  EXPECT_EQ(Zv_PutBitmapColors(bitmap.get(), -1, 1, colors), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapColors(bitmap.get(), 3, 2, colors), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapColors(bitmap.get(), 2, 0xFFFFFFFF, colors), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapColors(bitmap.get(), 0, 1, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(bitmap->Palette, before);
  BitmapHandle unallocated = *bitmap;
  unallocated.Flags = 0;
  EXPECT_EQ(Zv_PutBitmapColors(&unallocated, 0, 1, colors), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_PutBitmapColors(nullptr, 0, 1, colors), KERR_BAD_BITMAP);
  OwnedBitmap deep;
  ASSERT_EQ(Zv_CreateBitmap(deep.get(), ALLOC_MEMORY, 3, 3, 16, 0, nullptr, VIEW_UPRIGHT), KSUCCESS);
  EXPECT_EQ(Zv_PutBitmapColors(deep.get(), 0, 0, colors), KERR_BAD_PARAMETER);
}

TEST(BitCounts, OfEveryByte) {
  const unsigned char* counts = Zv_Get1BitOnTable();
  for (unsigned v = 0; v < 256; ++v) {
    unsigned bits = 0;
    for (unsigned b = 0; b < 8; ++b) bits += v >> b & 1;
    EXPECT_EQ(counts[v], bits);
  }
}

}  // namespace
