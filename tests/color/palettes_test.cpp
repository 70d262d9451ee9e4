// Fixed, grey and system palettes, palette objects, and the colours of a bitmap.
#include <zavo.h>

#include <gtest/gtest.h>

#include "color/colors.h"
#include "core/owners.h"

namespace {

using namespace zavotest;
using zavo::PaletteObject;

Color gray(unsigned level) {
  return {level, level, level};
}

// Level k of a channel of some bits.
unsigned levelOf(unsigned k, unsigned bits) {
  const unsigned last = (1u << bits) - 1;
  return (510 * (k & last) / last + 1) / 2;
}

TEST(FixedPalette, LevelsOfEachChannelAndTheStandardColors) {
  constexpr unsigned channels[][3] = {{}, {}, {}, {1, 1, 1}, {}, {2, 2, 1}, {2, 2, 2}, {2, 3, 2}, {3, 3, 2}};
  for (const int bits : {1, 2, 3, 5, 6, 7, 8}) {
    const auto [red, green, blue] = channels[bits];
    for (unsigned i = 0; i < 1u << bits; ++i) {
      const Color expected =
          bits <= 2 ? gray(255 * i / ((1u << bits) - 1))
                    : Color{levelOf(i >> (green + blue), red), levelOf(i >> blue, green), levelOf(i, blue)};
      EXPECT_EQ(colorOf(Zv_IntGetFixedPalette(bits)[i]), expected) << bits << " bits, entry " << i;
    }
  }
  for (unsigned i = 0; i < 16; ++i) {
    const unsigned on = i < 8 ? 128 : 255;
    Color expected = {i & 1 ? on : 0, i & 2 ? on : 0, i & 4 ? on : 0};
    if (i == 7 || i == 8) expected = gray(i == 7 ? 128 : 192);
    EXPECT_EQ(colorOf(Zv_IntGetFixedPalette(4)[i]), expected) << "entry " << i;
  }
  EXPECT_EQ(colorOf(Zv_IntGetFixedPalette(8)[0x92]), (Color{146, 146, 170}));
}

TEST(FixedPalette, CopiesAndObjectsHaveTheDepthsEntries) {
  Palette colors(257);
  for (int bits = 0; bits <= 8; ++bits) {
    const size_t count = bits == 0 ? 256 : 1u << bits;
    colors[count] = quad(1, 2, 3);
    EXPECT_EQ(Zv_GetFixedPalette(colors.data(), bits), KSUCCESS);
    EXPECT_EQ(colorOf(colors[count]), (Color{1, 2, 3})) << bits;
    EXPECT_EQ(colorOf(colors[count - 1]), gray(255)) << bits;
    if (bits == 0) {
      for (unsigned v = 0; v < 256; ++v) EXPECT_EQ(colorOf(colors[v]), gray(v));
    }
    const PaletteObject palette(Zv_CreateFixedPalette(bits));
    EXPECT_EQ(Zv_GetPaletteSize(palette.get()), 1u << std::max(bits, 1));
    EXPECT_EQ(Zv_CompareHandleToPalette(palette.get(), Zv_IntGetFixedPalette(std::max(bits, 1)), 256), 1);
  }
  for (const int bits : {-1, 9, 16}) {
    EXPECT_EQ(Zv_IntGetFixedPalette(bits), nullptr);
    EXPECT_EQ(Zv_CreateFixedPalette(bits), nullptr);
    EXPECT_EQ(Zv_GetFixedPalette(colors.data(), bits), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_IntGetFixedPalette(0), nullptr);
  EXPECT_EQ(Zv_GetFixedPalette(nullptr, 8), KERR_BAD_PARAMETER);
  for (const unsigned count : {0u, 1u, 3u, 255u, 512u}) {
    BitmapHandle bitmap{};
    bitmap.ColorCount = count;
    EXPECT_EQ(Zv_CreateBitmapFixedPalette(&bitmap), 0);
    EXPECT_EQ(bitmap.Palette, nullptr);
  }
  EXPECT_EQ(Zv_CreateBitmapFixedPalette(nullptr), 0);
}

TEST(GrayPalette, LevelsAreRoundedDown) {
  const struct {
    int bits;
    unsigned count, index, level;
  } cases[] = {{1, 2, 1, 255},  {3, 8, 2, 72}, {0, 256, 77, 77}, {8, 256, 200, 200},     {9, 512, 300, 149},
               {33, 2, 1, 255}, {32, 1, 0, 0}, {4, 16, 1, 17},   {15, 32768, 32767, 255}};
  for (const auto& c : cases) {
    const PaletteObject palette(Zv_CreateGrayPalette(c.bits));
    const Palette colors = entriesOf(palette.get());
    ASSERT_EQ(colors.size(), c.count) << c.bits;
    EXPECT_EQ(colorOf(colors[c.index]), gray(c.level)) << c.bits;
  }
  for (const int bits : {16, 31, -1}) EXPECT_EQ(Zv_CreateGrayPalette(bits), nullptr) << bits;
}

TEST(PaletteObjects, KeepColoursAndFlagsAndCutCountsAtTheEnd) {
  std::mt19937 random(211);
  Palette colors = noisePalette(600, random), read(601, quad(9, 9, 9));
  colors[299].rgbReserved = 4;
  const PaletteObject palette(Zv_CreatePalette(colors.data(), 600)), copy(Zv_DupPalette(palette.get()));
  EXPECT_EQ(Zv_GetPaletteEntries(palette.get(), 0, 601, read.data()), 600u);
  EXPECT_EQ(memcmp(read.data(), colors.data(), 2400), 0);
  EXPECT_EQ(colorOf(read[600]), gray(9));
  EXPECT_EQ(Zv_GetPaletteEntries(palette.get(), 598, 0xFFFFFFFF, read.data()), 2u);
  EXPECT_EQ(memcmp(read.data(), &colors[598], 8), 0);
  EXPECT_EQ(Zv_SetPaletteEntries(palette.get(), 300, 400, colors.data()), 300u);
  EXPECT_EQ(memcmp(&entriesOf(palette.get())[300], colors.data(), 1200), 0);
  EXPECT_EQ(Zv_CompareHandleToPalette(copy.get(), colors.data(), 600), 1) << "a copy of its own";
  EXPECT_EQ(Zv_CompareHandleToPalette(palette.get(), colors.data(), 301), 0);
  EXPECT_EQ(Zv_CompareHandleToPalette(palette.get(), colors.data(), 300), 1);
  read[0] = quad(9, 9, 9);
  for (const unsigned first : {600u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Zv_GetPaletteEntries(palette.get(), first, 2, read.data()), 0u);
    EXPECT_EQ(Zv_SetPaletteEntries(palette.get(), first, 2, colors.data()), 0u);
  }
  EXPECT_EQ(Zv_CreatePalette(nullptr, 2), nullptr);
  EXPECT_EQ(Zv_CreatePalette(colors.data(), 0), nullptr);
  EXPECT_EQ(Zv_CreatePalette(colors.data(), 65536), nullptr);
  EXPECT_EQ(Zv_GetPaletteSize(nullptr), 0u);
  EXPECT_EQ(Zv_GetPaletteEntries(nullptr, 0, 1, read.data()), 0u);
  EXPECT_EQ(colorOf(read[0]), gray(9));
  EXPECT_EQ(Zv_SetPaletteEntries(nullptr, 0, 1, colors.data()), 0u);
  EXPECT_EQ(Zv_DupPalette(nullptr), nullptr);
  EXPECT_EQ(Zv_CompareHandleToPalette(nullptr, colors.data(), 1), 1);
}

TEST(SystemPalette, ExistsOnPaletteDevicesOnly) {
  const zavo::ScreenDC screen;
  const PaletteObject palette(Zv_CreateSystemPalette());
  const bool device = (GetDeviceCaps(screen.get(), RASTERCAPS) & RC_PALETTE) != 0;
  const auto size = static_cast<unsigned>(GetDeviceCaps(screen.get(), SIZEPALETTE));
  EXPECT_EQ(Zv_GetPaletteSize(palette.get()), device ? size : 0);
}

TEST(CreateBitmap, GetsItsPalette) {
  std::mt19937 random(212);
  const Palette given = noisePalette(256, random);
  for (const int bits : {0, 1, 2, 3, 4, 5, 6, 7, 8, 16, 24, 32}) {
    TestBitmap fixed(5, 5, bits), bitmap;
    ASSERT_EQ(Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, 5, 5, bits, 0, given.data(), VIEW_UPRIGHT), KSUCCESS);
    const unsigned count = bits > 8 ? 0 : bits == 0 ? 256 : 1u << bits;
    EXPECT_EQ(Zv_GetPaletteSize(bitmap.Palette), count);
    EXPECT_EQ(bitmap.BitsPerPixel, bits == 0 ? 8 : bits);
    EXPECT_EQ(bitmap.ColorOrder, ORDER_RED_FIRST);
    if (bits == 0) {
      EXPECT_EQ(Zv_IsGrayScaleBitmap(&bitmap), 1);
    } else if (bits <= 8) {
      EXPECT_EQ(Zv_CompareHandleToPalette(bitmap.Palette, given.data(), count), 1);
      EXPECT_EQ(Zv_CompareHandleToPalette(fixed.Palette, Zv_IntGetFixedPalette(bits), count), 1);
    }
  }
}

TEST(IsGrayScaleBitmap, TellsRampsFromOtherGrays) {
  const struct {
    const char* what;
    int bits;
    std::vector<unsigned> levels;
    int kind;
  } cases[] = {{"rising", 2, {0, 85, 170, 255}, 1},
               {"falling", 2, {255, 170, 85, 0}, 2},
               {"one grey off", 2, {0, 85, 169, 255}, 3},
               {"eight rounded", 3, {0, 36, 73, 109, 146, 182, 219, 255}, 3},
               {"eight rounded down", 3, {0, 36, 72, 109, 145, 182, 218, 255}, 3},
               {"eight with the truncated step", 3, {0, 36, 72, 108, 144, 180, 216, 252}, 1},
               {"eight falling with the truncated step", 3, {255, 219, 183, 147, 111, 75, 39, 3}, 2},
               {"one black", 1, {0}, 1},
               {"one white", 1, {255}, 2},
               {"one grey", 1, {7}, 3}};
  for (const auto& c : cases) {
    TestBitmap bitmap(4, 4, c.bits);
    Palette colors;
    for (const unsigned level : c.levels) colors.push_back(quad(level, level, level));
    bitmap.ColorCount = static_cast<unsigned>(colors.size());
    setPalette(bitmap, colors);
    EXPECT_EQ(Zv_IsGrayScaleBitmap(&bitmap), c.kind) << c.what;
    ++bitmap.ColorCount;
    EXPECT_EQ(Zv_IsGrayScaleBitmap(&bitmap), 0) << "a palette too short";
    --bitmap.ColorCount;
    colors.back().rgbBlue ^= 1;
    setPalette(bitmap, colors);
    EXPECT_EQ(Zv_IsGrayScaleBitmap(&bitmap), 0) << "the last entry coloured";
  }
  TestBitmap ramp(4, 4, 8), deep(4, 4, 16);
  setPalette(ramp, grayPalette(256));
  EXPECT_EQ(Zv_IsGrayScaleBitmap(&ramp), 1);
  deep.ColorCount = 256;
  deep.Palette = Zv_CreateGrayPalette(8);
  EXPECT_EQ(Zv_IsGrayScaleBitmap(&deep), 0);
  EXPECT_EQ(Zv_IsGrayScaleBitmap(nullptr), 0);
}

TEST(BitmapColors, AreReadAndWrittenAllOrNothing) {
  TestBitmap bitmap(3, 3, 2), deep(3, 3, 16);
  const RGBQUAD written[] = {quad(1, 2, 3, 4), quad(5, 6, 7)};
  EXPECT_EQ(Zv_PutBitmapColors(&bitmap, 2, 2, written), KSUCCESS);
  RGBQUAD colors[4] = {};
  EXPECT_EQ(Zv_GetBitmapColors(&bitmap, 1, 3, colors), KSUCCESS);
  EXPECT_EQ(colorOf(colors[0]), gray(85));
  EXPECT_EQ(memcmp(&colors[1], written, 8), 0);
  const HPALETTE before = bitmap.Palette;
  const struct {
    int first;
    unsigned count;
  } refused[] = {{0, 5}, {2, 3}, {4, 1}, {-1, 1}, {1, 0xFFFFFFFF}};
  for (const auto& c : refused) {
    EXPECT_EQ(Zv_GetBitmapColors(&bitmap, c.first, c.count, colors), KERR_BAD_PARAMETER) << c.first;
    EXPECT_EQ(Zv_PutBitmapColors(&bitmap, c.first, c.count, colors), KERR_BAD_PARAMETER) << c.first;
  }
  EXPECT_EQ(Zv_GetBitmapColors(&bitmap, 0, 0, colors), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapColors(&bitmap, 0, 1, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapColors(&bitmap, 0, 1, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapColors(&deep, 0, 1, colors), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapColors(&deep, 0, 0, colors), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapColors(nullptr, 0, 1, colors), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_PutBitmapColors(nullptr, 0, 1, colors), KERR_BAD_BITMAP);
  BitmapHandle unallocated{};
  EXPECT_EQ(Zv_PutBitmapColors(&unallocated, 0, 1, colors), KERR_BAD_BITMAP);
  EXPECT_EQ(colorOf(colors[0]), gray(85));
  EXPECT_EQ(bitmap.Palette, before);
}

TEST(BitCounts, OfEveryByte) {
  for (unsigned v = 0; v < 256; ++v) EXPECT_EQ(Zv_Get1BitOnTable()[v], std::popcount(v));
}

}  // namespace
