// Fixed, grey and system palettes, palette objects, and the colours of a bitmap.
#include <zavo.h>

#include <bit>
#include <gtest/gtest.h>

#include "color/colors.h"
#include "core/owners.h"

namespace {

using namespace zavotest;
using zavo::PaletteObject;

Color gray(unsigned level) {
  return {level, level, level};
}

// Level k of a channel of some bits, rounded to the nearest.
unsigned levelOf(unsigned k, unsigned bits) {
  const unsigned last = (1u << bits) - 1;
  return (510 * (k & last) / last + 1) / 2;
}

TEST(FixedPalette, LevelsOfEachChannelAndTheStandardColors) {
  constexpr unsigned channels[][3] = {{},        {1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1},
                                      {2, 2, 1}, {2, 2, 2}, {2, 3, 2}, {3, 3, 2}};
  for (unsigned bits = 1; bits <= 8; ++bits) {
    const auto [red, green, blue] = channels[bits];
    for (unsigned i = 0; i < 1u << bits; ++i) {
      const unsigned on = i < 8 ? 128 : 255;
      Color expected = {levelOf(i >> (green + blue), red), levelOf(i >> blue, green), levelOf(i, blue)};
      if (bits <= 2) expected = gray(levelOf(i, bits));
      if (bits == 4) expected = {i & 1 ? on : 0, i & 2 ? on : 0, i & 4 ? on : 0};
      if (bits == 4 && (i == 7 || i == 8)) expected = gray(i == 7 ? 128 : 192);
      EXPECT_EQ(colorOf(Zv_IntGetFixedPalette(static_cast<int>(bits))[i]), expected) << bits << " bits, entry " << i;
    }
  }
}

TEST(FixedPalette, CopiesAndObjectsHaveTheDepthsEntries) {
  const Palette ramp = grayPalette(256);
  Palette colors(257);
  for (int bits = 0; bits <= 8; ++bits) {
    const size_t count = bits == 0 ? 256 : 1u << bits;
    colors[count] = quad(1, 2, 3);
    EXPECT_EQ(Zv_GetFixedPalette(colors.data(), bits), KSUCCESS);
    const RGBQUAD* expected = bits == 0 ? ramp.data() : Zv_IntGetFixedPalette(bits);
    EXPECT_EQ(memcmp(colors.data(), expected, count * sizeof(RGBQUAD)), 0) << bits;
    EXPECT_EQ(colorOf(colors[count]), (Color{1, 2, 3})) << bits;
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
  for (const int bits : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 32, 33}) {
    const PaletteObject palette(Zv_CreateGrayPalette(bits));
    const Palette colors = entriesOf(palette.get()), expected = grayPalette(bits == 0 ? 256 : 1u << bits % 32);
    ASSERT_EQ(colors.size(), expected.size()) << bits;
    EXPECT_EQ(memcmp(colors.data(), expected.data(), colors.size() * sizeof(RGBQUAD)), 0) << bits;
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
  EXPECT_EQ(Zv_CompareHandleToPalette(nullptr, colors.data(), 1), 1);
  for (const HPALETTE handle : {palette.get(), HPALETTE{}}) {
    EXPECT_EQ(Zv_GetPaletteEntries(handle, handle == nullptr ? 0 : 600, 2, read.data()), 0u);
    EXPECT_EQ(Zv_GetPaletteEntries(handle, 0xFFFFFFFF, 2, read.data()), 0u);
    EXPECT_EQ(Zv_SetPaletteEntries(handle, handle == nullptr ? 0 : 600, 2, colors.data()), 0u);
    EXPECT_EQ(memcmp(read.data(), &colors[598], 8), 0);
  }
  EXPECT_EQ(Zv_CreatePalette(nullptr, 2), nullptr);
  EXPECT_EQ(Zv_CreatePalette(colors.data(), 0), nullptr);
  EXPECT_EQ(Zv_CreatePalette(colors.data(), 65536), nullptr);
  EXPECT_EQ(Zv_GetPaletteSize(nullptr), 0u);
  EXPECT_EQ(Zv_DupPalette(nullptr), nullptr);
}

TEST(SystemPalette, ExistsOnPaletteDevicesOnly) {
  const zavo::ScreenDC screen;
  const PaletteObject palette(Zv_CreateSystemPalette());
  const bool device = (GetDeviceCaps(screen.get(), RASTERCAPS) & RC_PALETTE) != 0;
  const auto size = static_cast<unsigned>(GetDeviceCaps(screen.get(), SIZEPALETTE));
  EXPECT_EQ(Zv_GetPaletteSize(palette.get()), device ? size : 0);
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
    BitmapHandle record = bitmap;
    record.BitsPerPixel = 16;
    EXPECT_EQ(Zv_IsGrayScaleBitmap(&record), 0) << "no indexes";
    record = bitmap;
    ++record.ColorCount;
    EXPECT_EQ(Zv_IsGrayScaleBitmap(&record), 0) << "a palette too short";
    colors.back().rgbBlue ^= 1;
    setPalette(bitmap, colors);
    EXPECT_EQ(Zv_IsGrayScaleBitmap(&bitmap), 0) << "the last entry coloured";
  }
  EXPECT_EQ(Zv_IsGrayScaleBitmap(nullptr), 0);
}

TEST(BitmapColors, AreReadAndWrittenAllOrNothing) {
  TestBitmap bitmap(3, 3, 2);
  const RGBQUAD written[] = {quad(1, 2, 3, 4), quad(5, 6, 7)};
  EXPECT_EQ(Zv_PutBitmapColors(&bitmap, 2, 2, written), KSUCCESS);
  RGBQUAD colors[4] = {};
  EXPECT_EQ(Zv_GetBitmapColors(&bitmap, 1, 3, colors), KSUCCESS);
  EXPECT_EQ(colorOf(colors[0]), gray(85));
  EXPECT_EQ(memcmp(&colors[1], written, 8), 0);
  const HPALETTE before = bitmap.Palette;
  BitmapHandle empty{}, deep = bitmap;
  deep.BitsPerPixel = 24;
  const struct {
    BitmapHandle* bitmap;
    int first;
    unsigned count;
    RGBQUAD* colors;
    int status;
  } refused[] = {{&bitmap, 0, 5, colors, KERR_BAD_PARAMETER},  {&bitmap, 2, 3, colors, KERR_BAD_PARAMETER},
                 {&bitmap, 4, 1, colors, KERR_BAD_PARAMETER},  {&bitmap, 1, 0xFFFFFFFF, colors, KERR_BAD_PARAMETER},
                 {&bitmap, -1, 1, colors, KERR_BAD_PARAMETER}, {&bitmap, 0, 1, nullptr, KERR_BAD_PARAMETER},
                 {&deep, 0, 1, colors, KERR_BAD_PARAMETER},    {nullptr, 0, 1, colors, KERR_BAD_BITMAP}};
  for (const auto& c : refused) {
    EXPECT_EQ(Zv_GetBitmapColors(c.bitmap, c.first, c.count, c.colors), c.status) << c.first << ", " << c.count;
    EXPECT_EQ(Zv_PutBitmapColors(c.bitmap, c.first, c.count, c.colors), c.status) << c.first << ", " << c.count;
  }
  EXPECT_EQ(Zv_GetBitmapColors(&bitmap, 0, 0, colors), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapColors(&empty, 0, 1, colors), KERR_BAD_BITMAP);
  EXPECT_EQ(colorOf(colors[0]), gray(85));
  EXPECT_EQ(bitmap.Palette, before);
}

TEST(BitCounts, OfEveryByte) {
  for (unsigned v = 0; v < 256; ++v) EXPECT_EQ(Zv_Get1BitOnTable()[v], std::popcount(v));
}

}  // namespace
