// The paint-mode decision, the display-mode flags and the paint palette.
#include <zavo.h>

#include <gtest/gtest.h>

#include "support/canvas.h"
#include "support/test_bitmap.h"

namespace zavotest {
namespace {

// The fixed palette, from white to black, or one step off, which is another palette and has no even greys.
enum class Colors : uint8_t { fixed, descending, own };

void giveColors(BitmapHandle& bitmap, Colors colors) {
  if (colors == Colors::fixed) return;
  std::vector<RGBQUAD> entries(bitmap.ColorCount);
  Zv_GetPaletteEntries(bitmap.Palette, 0, bitmap.ColorCount, entries.data());
  if (colors == Colors::descending) std::swap(entries.front(), entries.back());
  if (colors == Colors::own) ++entries.back().rgbBlue;
  DeleteObject(bitmap.Palette);
  bitmap.Palette = Zv_CreatePalette(entries.data(), bitmap.ColorCount);
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
      {{1}, Colors::fixed, dither, {0, 0, 0, 0}},
      {{1}, Colors::fixed, both, {0, 0, 2, 0}},
      {{1}, Colors::fixed, gray, {0, 3, 3, 3}},
      {{1}, Colors::fixed, alternative, {5, 5, 5, 5}},
      {{1}, Colors::fixed, gray | alternative, {5, 3, 3, 3}},
      {{1}, Colors::descending, gray, {0, 4, 4, 4}},
      {{1}, Colors::descending, alternative, {6, 6, 6, 6}},
      {{1}, Colors::own, gray | dither, {0, 0, 0, 0}},
      {{1}, Colors::own, gray | both, {0, 2, 2, 2}},
      {{1}, Colors::own, alternative | both, {2, 2, 2, 2}},
      {{2, 3, 5, 6, 7}, Colors::fixed, 0, {1, 1, 1, 1}},
      {{2, 3, 5, 6, 7}, Colors::fixed, dither, {2, 2, 1, 1}},
      {{2, 3, 5, 6, 7}, Colors::fixed, both, {2, 2, 2, 1}},
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
  } cases[] = {{0, 1, DT_RASPRINTER, 1},  {3, 1, DT_RASDISPLAY, 1},   {1, 4, DT_RASDISPLAY, 4},
               {7, 1, DT_RASPRINTER, 4},  {8, 1, DT_RASDISPLAY, 8},   {15, 1, DT_RASPRINTER, 8},
               {8, 2, DT_RASDISPLAY, 24}, {32, 1, DT_RASDISPLAY, 24}, {1, 1, DT_METAFILE, 24}};
  const Canvas canvas(1, 1);
  TestBitmap bitmap(5, 5, 24);
  for (const auto& c : cases) {
    const FakeDevice device(c.bits, c.planes, c.technology);
    int bits = 0;
    Zv_GetDitherFlags(canvas.dc(), &bitmap, &bits, nullptr);
    EXPECT_EQ(bits, c.depth) << c.bits << " x " << c.planes;
  }
}

TEST(DisplayMode, MaskedBitsChangeAndTheFormerFlagsComeBack) {
  const PaintSettings settings(0x0C);
  EXPECT_EQ(Zv_SetDisplayMode(0, ~0u), 0x0Cu);
  EXPECT_EQ(Zv_GetDisplayMode(), 0x0Cu);
  EXPECT_EQ(Zv_SetDisplayMode(0x109, 0x101), 0x0Cu);
  EXPECT_EQ(Zv_GetDisplayMode(), 0x105u);
}

// What the palettes hold is seen where pictures are painted through them.
TEST(PaintPalette, IsTheTargetOfDitheringOrTheBitmapsOwn) {
  const PaintSettings settings(PAINT_DITHER);
  const Canvas canvas(1, 1);
  const struct {
    int bits, deviceBits;
    unsigned flags, colors;
  } cases[] = {{24, 1, 0, 2},   {24, 4, PAINT_CUBE_PALETTE, 16},
               {24, 8, 0, 256}, {24, 8, PAINT_CUBE_PALETTE, 256},
               {24, 24, 0, 0},  {1, 24, 0, 2},
               {3, 24, 0, 8},   {8, 24, 0, 256}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.bits << " bits, device of " << c.deviceBits);
    Zv_SetDisplayMode(PAINT_CUBE_PALETTE, c.flags);
    const FakeDevice device(c.deviceBits);
    TestBitmap bitmap(5, 5, c.bits);
    HPALETTE palette = Zv_CreatePaintPalette(canvas.dc(), &bitmap);
    EXPECT_EQ(Zv_GetPaletteSize(palette), c.colors);
    if (palette != nullptr) DeleteObject(palette);
  }
  TestBitmap bitmap(5, 5, 8);
  RGBQUAD entry = {0, 0, 0, PC_NOCOLLAPSE};
  ASSERT_EQ(Zv_PutBitmapColors(&bitmap, 0, 1, &entry), KSUCCESS);
  PaintSettings::adjust(100, 0, 100);  // the colours only
  HPALETTE adjusted = Zv_CreatePaintPalette(canvas.dc(), &bitmap);
  Zv_GetPaletteEntries(adjusted, 0, 1, &entry);
  EXPECT_TRUE(entry.rgbRed == 26 && entry.rgbReserved == PC_NOCOLLAPSE);
  DeleteObject(adjusted);
  DeleteObject(bitmap.Palette);
  bitmap.Palette = nullptr;
  EXPECT_EQ(Zv_CreatePaintPalette(canvas.dc(), &bitmap), nullptr);
  EXPECT_EQ(Zv_CreatePaintPalette(nullptr, &bitmap), nullptr);
  EXPECT_EQ(Zv_CreatePaintPalette(canvas.dc(), nullptr), nullptr);
}

}  // namespace
}  // namespace zavotest
