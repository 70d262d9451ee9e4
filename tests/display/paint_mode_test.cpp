// The paint-mode decision, the display-mode flags and the paint palette.
#include <zavo.h>

#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"

namespace zavotest {
namespace {

constexpr RGBQUAD redGreen[] = {{0, 0, 255, 0}, {0, 255, 0, 0}};

enum class Colors : uint8_t { fixed, own, ascending, descending, noGray };

void giveColors(BitmapHandle& bitmap, Colors colors) {
  if (colors == Colors::fixed) return;
  if (colors == Colors::ascending || colors == Colors::descending) {
    giveBlackAndWhite(bitmap, colors == Colors::descending);
    return;
  }
  HPALETTE palette = nullptr;
  if (colors == Colors::noGray) palette = Zv_CreatePalette(redGreen, 2);
  if (colors == Colors::own) {
    std::vector<RGBQUAD> entries(bitmap.ColorCount);
    Zv_GetPaletteEntries(bitmap.Palette, 0, bitmap.ColorCount, entries.data());
    ++entries.back().rgbBlue;  // one step off is another palette
    palette = Zv_CreatePalette(entries.data(), bitmap.ColorCount);
  }
  DeleteObject(bitmap.Palette);
  bitmap.Palette = palette;
}

TEST(PaintMode, FollowsDepthFlagsAndDevice) {
  constexpr unsigned dither = PAINT_DITHER, fixed = PAINT_FIXED_PALETTE, both = PAINT_DITHER | PAINT_FIXED_PALETTE;
  constexpr unsigned gray = PAINT_GRAY_1BIT, alternative = PAINT_GRAY_1BIT_ALT;
  const struct {
    std::vector<int> depths;
    Colors colors;
    unsigned flags;
    int modes[4];  // on devices of 1, 4, 8 and 24 bits
  } cases[] = {
      {{1}, Colors::ascending, dither, {0, 0, 0, 0}},
      {{1}, Colors::ascending, both, {0, 0, 2, 0}},
      {{1}, Colors::ascending, fixed, {0, 0, 0, 0}},
      {{1}, Colors::ascending, gray, {0, 3, 3, 3}},
      {{1}, Colors::ascending, gray | both, {0, 3, 3, 3}},
      {{1}, Colors::ascending, alternative, {5, 5, 5, 5}},
      {{1}, Colors::ascending, gray | alternative, {5, 3, 3, 3}},
      {{1}, Colors::descending, gray, {0, 4, 4, 4}},
      {{1}, Colors::descending, alternative, {6, 6, 6, 6}},
      {{1}, Colors::noGray, gray | dither, {0, 0, 0, 0}},
      {{1}, Colors::noGray, gray | both, {0, 2, 2, 2}},
      {{1}, Colors::noGray, alternative | dither, {0, 0, 0, 0}},
      {{1}, Colors::noGray, alternative | both, {2, 2, 2, 2}},
      {{2, 3, 5, 6, 7}, Colors::fixed, 0, {1, 1, 1, 1}},
      {{2, 3, 5, 6, 7}, Colors::fixed, fixed, {1, 1, 1, 1}},
      {{2, 3, 5, 6, 7}, Colors::fixed, dither, {2, 2, 1, 1}},
      {{2, 3, 5, 6, 7}, Colors::fixed, both, {2, 2, 2, 1}},
      {{4}, Colors::own, fixed, {0, 0, 0, 0}},
      {{4}, Colors::own, dither, {2, 2, 0, 0}},
      {{4}, Colors::own, both, {2, 2, 2, 0}},
      {{4}, Colors::fixed, dither, {2, 0, 0, 0}},
      {{4}, Colors::fixed, both, {2, 0, 2, 0}},
      {{8}, Colors::own, fixed, {0, 0, 0, 0}},
      {{8}, Colors::own, dither, {2, 2, 0, 0}},
      {{8}, Colors::own, both, {2, 2, 2, 0}},
      {{8}, Colors::fixed, dither, {2, 2, 0, 0}},
      {{8}, Colors::fixed, both, {2, 2, 0, 0}},
      {{16, 32}, Colors::fixed, fixed, {1, 1, 1, 1}},
      {{16, 32}, Colors::fixed, dither, {2, 2, 2, 1}},
      {{16, 32}, Colors::fixed, both, {2, 2, 2, 1}},
      {{24}, Colors::fixed, fixed, {0, 0, 0, 0}},
      {{24}, Colors::fixed, dither, {2, 2, 2, 0}},
  };
  constexpr int devices[] = {1, 4, 8, 24};
  const Canvas canvas(1, 1);
  for (size_t i = 0; i < std::size(cases); ++i) {
    const PaintSettings settings(cases[i].flags);
    for (const int depth : cases[i].depths) {
      TestBitmap bitmap(5, 5, depth);
      giveColors(bitmap, cases[i].colors);
      for (size_t k = 0; k < 4; ++k) {
        SCOPED_TRACE(testing::Message() << "case " << i << ", " << depth << " bits, device of " << devices[k]);
        const FakeDevice device(devices[k]);
        int bits = 0, mode = -1;
        Zv_GetDitherFlags(canvas.dc(), &bitmap, &bits, &mode);
        EXPECT_EQ(bits, devices[k]);
        EXPECT_EQ(mode, cases[i].modes[k]);
      }
    }
  }
}

TEST(PaintMode, DeviceDepthIsBroughtDownToFour) {
  const struct {
    int bits, planes, technology, depth;
  } cases[] = {{1, 1, DT_RASDISPLAY, 1},   {3, 1, DT_RASDISPLAY, 1},   {1, 4, DT_RASDISPLAY, 4},
               {7, 1, DT_RASPRINTER, 4},   {8, 1, DT_RASDISPLAY, 8},   {15, 1, DT_RASPRINTER, 8},
               {16, 1, DT_RASDISPLAY, 24}, {32, 1, DT_RASDISPLAY, 24}, {1, 1, DT_METAFILE, 24},
               {8, 2, DT_RASDISPLAY, 24},  {0, 1, DT_RASPRINTER, 1}};
  const Canvas canvas(1, 1);
  TestBitmap bitmap(5, 5, 24);
  for (const auto& c : cases) {
    const FakeDevice device(c.bits, c.planes, c.technology);
    int bits = 0;
    Zv_GetDitherFlags(canvas.dc(), &bitmap, &bits, nullptr);
    EXPECT_EQ(bits, c.depth) << c.bits << " x " << c.planes;
  }
  HDC metafile = CreateMetaFileA(nullptr);
  int bits = 0;
  Zv_GetDitherFlags(metafile, &bitmap, &bits, nullptr);
  EXPECT_EQ(bits, 24);
  DeleteMetaFile(CloseMetaFile(metafile));
}

TEST(DisplayMode, MaskedBitsChangeAndTheFormerFlagsComeBack) {
  const PaintSettings settings(0x0C);
  EXPECT_EQ(Zv_SetDisplayMode(0, ~0u), 0x0Cu);
  EXPECT_EQ(Zv_GetDisplayMode(), 0x0Cu);
  EXPECT_EQ(Zv_SetDisplayMode(0x109, 0x101), 0x0Cu);
  EXPECT_EQ(Zv_GetDisplayMode(), 0x105u);
}

// --- The paint palette

std::vector<PALETTEENTRY> paintPalette(BitmapHandle& bitmap, int deviceBits) {
  const Canvas canvas(1, 1);
  const FakeDevice device(deviceBits);
  HPALETTE palette = Zv_CreatePaintPalette(canvas.dc(), &bitmap);
  if (palette == nullptr) return {};
  std::vector<PALETTEENTRY> entries(Zv_GetPaletteSize(palette));
  GetPaletteEntries(palette, 0, static_cast<UINT>(entries.size()), entries.data());
  DeleteObject(palette);
  return entries;
}

void expectColors(const std::vector<PALETTEENTRY>& entries, const RGBQUAD* colors, size_t count,
                  const AdjustTable* table = nullptr) {
  ASSERT_EQ(entries.size(), count);
  const auto level = [table](BYTE value) { return table != nullptr ? (*table)[value] : value; };
  for (size_t i = 0; i < count; ++i) {
    EXPECT_EQ(entries[i].peRed, level(colors[i].rgbRed)) << i;
    EXPECT_EQ(entries[i].peGreen, level(colors[i].rgbGreen)) << i;
    EXPECT_EQ(entries[i].peBlue, level(colors[i].rgbBlue)) << i;
  }
}

TEST(PaintPalette, IsTheTargetOfDitheringUnadjusted) {
  const PaintSettings settings(PAINT_DITHER);
  PaintSettings::adjust(100, 200, 150);
  TestBitmap bitmap(5, 5, 24);
  for (const int bits : {1, 4, 8}) {
    SCOPED_TRACE(bits);
    expectColors(paintPalette(bitmap, bits), Zv_IntGetFixedPalette(bits), size_t{1} << bits);
  }
  EXPECT_TRUE(paintPalette(bitmap, 24).empty());

  Zv_SetDisplayMode(PAINT_CUBE_PALETTE, PAINT_CUBE_PALETTE);
  RGBQUAD cube[256] = {};
  for (unsigned i = 0; i < 216; ++i) {
    cube[i] = {static_cast<BYTE>(i % 6 * 51), static_cast<BYTE>(i / 6 % 6 * 51), static_cast<BYTE>(i / 36 * 51), 0};
  }
  expectColors(paintPalette(bitmap, 8), cube, 256);
  expectColors(paintPalette(bitmap, 4), Zv_IntGetFixedPalette(4), 16);
}

TEST(PaintPalette, IsTheBitmapsOwnAdjustedOtherwise) {
  const PaintSettings settings(PAINT_DITHER);
  PaintSettings::adjust(100, 200, 150);
  const AdjustTable table = currentAdjustTable();
  for (const int bits : {1, 3, 4, 8}) {
    SCOPED_TRACE(bits);
    TestBitmap bitmap(5, 5, bits);
    expectColors(paintPalette(bitmap, 24), Zv_IntGetFixedPalette(bits), size_t{1} << bits, &table);
    DeleteObject(bitmap.Palette);
    bitmap.Palette = nullptr;
    EXPECT_TRUE(paintPalette(bitmap, 24).empty());
  }
  const Canvas canvas(1, 1);
  EXPECT_EQ(Zv_CreatePaintPalette(nullptr, nullptr), nullptr);
  EXPECT_EQ(Zv_CreatePaintPalette(canvas.dc(), nullptr), nullptr);
}

}  // namespace
}  // namespace zavotest
