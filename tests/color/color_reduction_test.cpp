// Reducing colours: every source depth with every target and palette against a model, and what carries over.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "color/colors.h"
#include "support/progress_log.h"
#include "support/refusals.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

constexpr unsigned paletteOptions[] = {0, COLORRES_GIVEN_PALETTE, COLORRES_FIXED_PALETTE, COLORRES_GRAY_PALETTE};

Color widened(Color c, int bits) {
  const auto five = [](unsigned v) { return v / 8 << 3 | v / 8 >> 2; };
  return bits == 16 ? Color{five(c.red), five(c.green), five(c.blue)} : c;
}

unsigned nearest(const Palette& palette, size_t count, const Color& c) {
  return Zv_FindPaletteIndex(palette.data(), static_cast<unsigned>(count), c.red, c.green, c.blue);
}

struct Case {
  int sourceBits, targetBits;
  unsigned option;
};

std::vector<Case> allCases() {
  std::vector<Case> cases;
  for (const int source : allDepths) {
    cases.push_back({source, 0, 0});
    for (const int target : allDepths) {
      for (const unsigned option : paletteOptions) {
        if (target <= 8 || option == 0 || option == COLORRES_GIVEN_PALETTE) cases.push_back({source, target, option});
      }
    }
  }
  return cases;
}

TEST(ColorReduction, NearestInEveryFormat) {
  std::mt19937 random(231);
  for (const Case& c : allCases()) {
    SCOPED_TRACE(testing::Message() << c.sourceBits << " to " << c.targetBits << " bits, option " << c.option);
    TestBitmap source(37, 5, c.sourceBits);
    ASSERT_TRUE(source.allocated());
    if (c.sourceBits <= 8) setPalette(source, noisePalette(source.ColorCount, random));
    if (c.sourceBits > 8 && random() % 2 == 0) source.ColorOrder = ORDER_RED_FIRST;
    fillWithNoise(source, random);
    const size_t full = c.targetBits <= 8 ? 1u << c.targetBits : 0;
    const size_t givenCount = full == 0 ? 1 : 1 + random() % full;
    const Palette given = noisePalette(givenCount, random);

    TestBitmap result;
    const unsigned order = random() % 2 == 0 ? COLORRES_BLUE_FIRST : 0;
    ASSERT_EQ(Zv_ColorResBitmap(&source, &result, c.targetBits, c.option | order | COLORRES_NEAREST, given.data(),
                                static_cast<unsigned>(givenCount)),
              KSUCCESS);
    EXPECT_EQ(result.BitsPerPixel, c.targetBits == 0 ? 8 : c.targetBits);
    EXPECT_EQ(result.ColorOrder, c.targetBits > 8 && order != 0 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST);

    const std::vector<Color> before = colorsOf(source), after = colorsOf(result);
    ASSERT_EQ(before.size(), after.size());
    const Palette palette = paletteOf(result);
    EXPECT_EQ(palette.size(), c.targetBits > 8 ? 0 : result.ColorCount);
    const bool gray = c.targetBits == 0 || c.option == COLORRES_GRAY_PALETTE;
    const bool ownPalette = c.option == 0 && c.targetBits != 0 && c.targetBits <= 8;
    if (ownPalette && c.sourceBits > c.targetBits) continue;  // an optimised palette has tests of its own
    for (size_t i = 0; i < before.size(); ++i) {
      Color expected = before[i];
      if (c.targetBits > 8) {
        expected = widened(expected, c.targetBits);
      } else if (!ownPalette) {
        const size_t count = c.option == COLORRES_GIVEN_PALETTE ? givenCount : palette.size();
        const unsigned level = brightness(expected);
        expected = colorOf(palette[nearest(palette, count, gray ? Color{level, level, level} : expected)]);
      }
      ASSERT_EQ(after[i], expected) << "pixel " << i;
    }
  }
}

// Many colours and palettes in which many entries are equally near, or equal.
TEST(ColorReduction, NearestIsExact) {
  std::mt19937 random(241);
  TestBitmap source(160, 100, 24);
  ASSERT_TRUE(source.allocated());
  for (int round = 0; round < 24; ++round) {
    SCOPED_TRACE(round);
    fillWithNoise(source, random);
    Palette palette = noisePalette(1 + random() % 256, random);
    const auto mask = static_cast<uint8_t>(0xFF << round % 8);  // coarser and coarser
    for (auto& entry : palette) {
      entry.rgbRed &= mask;
      entry.rgbGreen &= mask;
      entry.rgbBlue &= mask;
      if (round % 3 == 0) entry.rgbBlue = 0;
    }
    if (round % 4 == 1) palette.back() = palette.front() = {0, 0, 0, 0};
    if (round % 4 == 2) palette.back() = palette.front() = {255, 255, 255, 0};
    for (unsigned i = 0; i < 40; ++i) {
      const uint8_t extreme[] = {static_cast<uint8_t>(i % 2 * 255), static_cast<uint8_t>(i % 2 * 255),
                                 static_cast<uint8_t>(i % 4 < 2 ? i % 2 * 255 : 128)};
      Zv_PutBitmapRowCol(&source, extreme, 0, i, 3);
    }
    TestBitmap result;
    ASSERT_EQ(Zv_ColorResBitmap(&source, &result, 8, COLORRES_GIVEN_PALETTE | COLORRES_NEAREST, palette.data(),
                                static_cast<unsigned>(palette.size())),
              KSUCCESS);
    const Picture indexes = pictureOf(result);
    const auto colors = colorsOf(source);
    for (size_t i = 0; i < colors.size(); ++i) {
      ASSERT_EQ(indexes.pixels[i], nearest(palette, palette.size(), colors[i]));
    }
  }
}

TEST(ColorReduction, PalettesAreThoseAskedFor) {
  std::mt19937 random(232);
  TestBitmap source(8, 8, 24);
  ASSERT_TRUE(source.allocated());
  fillWithNoise(source, random);
  for (int bits = 1; bits <= 8; ++bits) {
    SCOPED_TRACE(bits);
    const size_t full = 1u << bits;
    const Palette given = noisePalette(full, random);
    for (const unsigned option : {COLORRES_GIVEN_PALETTE, COLORRES_FIXED_PALETTE, COLORRES_GRAY_PALETTE}) {
      TestBitmap result;
      ASSERT_EQ(Zv_ColorResBitmap(&source, &result, bits, option, given.data(), static_cast<unsigned>(full)), KSUCCESS);
      const Palette palette = paletteOf(result);
      ASSERT_EQ(palette.size(), full);
      for (size_t i = 0; i < full; ++i) {
        const auto level = static_cast<unsigned>(i * 255 / (full - 1));
        const Color expected = option == COLORRES_GIVEN_PALETTE   ? colorOf(given[i])
                               : option == COLORRES_FIXED_PALETTE ? colorOf(Zv_IntGetFixedPalette(bits)[i])
                                                                  : Color{level, level, level};
        ASSERT_EQ(colorOf(palette[i]), expected) << "option " << option << ", entry " << i;
      }
    }
  }
}

TEST(ColorReduction, RefusesWhatItCannotDo) {
  std::mt19937 random(233);
  TestBitmap source(4, 4, 24);
  ASSERT_TRUE(source.allocated());
  const Palette palette = noisePalette(256, random);
  BitmapHandle unallocated;
  Zv_InitBitmap(&unallocated, 4, 4, 24);
  const struct {
    BitmapHandle* source;
    int bits;
    unsigned options;
    const RGBQUAD* palette;
    unsigned count;
    int status;
  } cases[] = {
      {nullptr, 9, 0x30, nullptr, 0, KERR_BAD_BITMAP},
      {&unallocated, 8, 0, nullptr, 0, KERR_BAD_BITMAP},
      {&source, 9, 0x30, nullptr, 0, KERR_BAD_BPP},
      {&source, -1, 0, nullptr, 0, KERR_BAD_BPP},
      {&source, 33, 0, nullptr, 0, KERR_BAD_BPP},
      {&source, 8, COLORRES_FIXED_PALETTE | COLORRES_GRAY_PALETTE, nullptr, 0, KERR_BAD_PARAMETER},
      {&source, 8, COLORRES_GIVEN_PALETTE | COLORRES_OPTIMISED_PALETTE, palette.data(), 2, KERR_BAD_PARAMETER},
      {&source, 8, COLORRES_GIVEN_PALETTE, nullptr, 256, KERR_BAD_PARAMETER},
      {&source, 8, COLORRES_GIVEN_PALETTE, palette.data(), 0, KERR_BAD_PARAMETER},
      {&source, 4, COLORRES_GIVEN_PALETTE, palette.data(), 17, KERR_BAD_PARAMETER},
      {&source, 4, COLORRES_GIVEN_PALETTE, palette.data(), 16, KSUCCESS},
  };
  for (const auto& c : cases) {
    TestBitmap result;
    EXPECT_EQ(Zv_ColorResBitmap(c.source, &result, c.bits, c.options, c.palette, c.count), c.status)
        << c.bits << " bits, options " << c.options << ", " << c.count << " colours";
    EXPECT_EQ(result.allocated(), c.status == KSUCCESS);
  }
}

// Rows of indexes as a dither run on the bitmap gives them.
std::vector<uint8_t> ditheredRow(BitmapHandle& source, unsigned y, const BitmapHandle& result) {
  std::vector<uint8_t> row(source.BytesPerLine), dithered(result.BytesPerLine);
  Zv_GetBitmapRow(&source, row.data(), y, source.BytesPerLine);
  Zv_DitherLine(&source, row.data(), dithered.data());
  return dithered;
}

void expectDithered(BitmapHandle& source, BitmapHandle& result, unsigned colors) {
  const Palette palette = paletteOf(result);
  ASSERT_EQ(Zv_StartDithering(&source, palette.data(), colors), KSUCCESS);
  for (unsigned y = 0; y < static_cast<unsigned>(source.Height); ++y) {
    std::vector<uint8_t> row(result.BytesPerLine);
    Zv_GetBitmapRow(&result, row.data(), y, result.BytesPerLine);
    ASSERT_EQ(row, ditheredRow(source, y, result)) << "row " << y;
  }
  Zv_StopDithering(&source);
}

TEST(ColorReduction, DithersByTheSourcesMethod) {
  std::mt19937 random(237);
  for (int method = 1; method <= 8; ++method) {
    for (const int depth : {4, 16, 24, 32}) {
      for (const int bits : {1, 3, 4, 8}) {
        for (const unsigned option : paletteOptions) {
          SCOPED_TRACE(testing::Message()
                       << "method " << method << ", " << depth << " to " << bits << " bits, option " << option);
          TestBitmap source(81, 12, depth), gray, result;
          ASSERT_TRUE(source.allocated());
          if (option == 0 && depth <= bits) continue;  // keeps its colours
          fillWithPicture(source, random);
          if (depth == 4) setPalette(source, noisePalette(16, random));
          source.DitheringMethod = method;
          const Palette given = noisePalette(1u << bits, random);
          ASSERT_EQ(Zv_ColorResBitmap(&source, &result, bits, option, given.data(), 1u << bits), KSUCCESS);
          if (option == COLORRES_GRAY_PALETTE && bits == 8) continue;  // has every grey
          BitmapHandle* dithered = &source;
          if (option == COLORRES_GRAY_PALETTE) {
            ASSERT_EQ(Zv_ColorResBitmap(&source, &gray, 0, 0, nullptr, 0), KSUCCESS);
            dithered = &gray;
          }
          // An optimised palette of fewer colours ends in black entries that are none of its own.
          const Palette palette = paletteOf(result);
          auto colors = static_cast<unsigned>(palette.size());
          while (option == 0 && colors > 1 && colorOf(palette[colors - 1]) == Color{}) --colors;
          expectDithered(*dithered, result, colors);
          if (HasFailure()) return;
        }
      }
    }
  }
}

// A palette of more bits, or one that has all the colours in other places, loses nothing: no pattern may show.
TEST(ColorReduction, ColorsThatAreThereAreNotDithered) {
  std::mt19937 random(238);
  TestBitmap source(50, 6, 4);
  ASSERT_TRUE(source.allocated());
  fillWithNoise(source, random);
  const Palette palette = noisePalette(16, random);
  setPalette(source, palette);
  const std::vector<Color> before = colorsOf(source);
  const Palette reversed(palette.rbegin(), palette.rend());
  source.DitheringMethod = 7;
  const struct {
    int bits;
    unsigned option;
  } cases[] = {
      {8, 0}, {4, 0}, {4, COLORRES_GIVEN_PALETTE}, {5, COLORRES_GIVEN_PALETTE}, {6, COLORRES_OPTIMISED_PALETTE}};
  for (const auto& c : cases) {
    TestBitmap result;
    ASSERT_EQ(Zv_ColorResBitmap(&source, &result, c.bits, c.option, reversed.data(), 16), KSUCCESS);
    EXPECT_EQ(colorsOf(result), before) << c.bits << " bits, option " << c.option;
  }
}

// The entries that pad a given palette are never used, nor are those of a fixed palette that it begins like.
TEST(ColorReduction, OnlyGivenColorsAreUsed) {
  std::mt19937 random(239);
  TestBitmap source(40, 8, 24);
  ASSERT_TRUE(source.allocated());
  fillWithNoise(source, random);
  const Palette grays(Zv_IntGetFixedPalette(2), Zv_IntGetFixedPalette(2) + 4);
  for (int method = 0; method <= 8; ++method) {
    source.DitheringMethod = method;
    TestBitmap result;
    ASSERT_EQ(Zv_ColorResBitmap(&source, &result, 8, COLORRES_GIVEN_PALETTE, grays.data() + 1, 3), KSUCCESS);
    for (const uint32_t index : pictureOf(result).pixels) ASSERT_LT(index, 3u) << "method " << method;
    TestBitmap first;
    ASSERT_EQ(Zv_ColorResBitmap(&source, &first, 2, COLORRES_GIVEN_PALETTE, grays.data(), 3), KSUCCESS);
    for (const uint32_t index : pictureOf(first).pixels) ASSERT_LT(index, 3u) << "method " << method;
  }
}

TEST(ColorReduction, CubeOfSixLevels) {
  std::mt19937 random(240);
  TestBitmap source(64, 64, 24), result;
  ASSERT_TRUE(source.allocated());
  fillWithNoise(source, random);
  source.DitheringMethod = 1;
  ASSERT_EQ(Zv_ColorResBitmap(&source, &result, 8, COLORRES_FIXED_PALETTE, nullptr, 216), KSUCCESS);
  const Palette palette = paletteOf(result);
  for (unsigned i = 0; i < 216; ++i) {
    ASSERT_EQ(colorOf(palette[i]), (Color{i / 36 * 51, i / 6 % 6 * 51, i % 6 * 51}));
  }
  for (const uint32_t index : pictureOf(result).pixels) ASSERT_LT(index, 216u);
}

TEST(ColorReduction, MatchTableOfTheThreadIsUsed) {
  TestBitmap source(3, 1, 24), result;
  ASSERT_TRUE(source.allocated());
  const uint8_t row[] = {0, 0, 255, 0, 255, 0, 255, 0, 0};
  Zv_PutBitmapRow(&source, row, 0, 9);
  std::vector<unsigned> table(32768, 6);  // every colour to entry 5
  table[31 << 5] = 0;                     // green is unknown
  table[31] = 300;                        // blue has an entry of a larger palette
  unsigned* const previous = Zv_SetUserMatchTable(table.data());
  EXPECT_EQ(Zv_ColorResBitmap(&source, &result, 3, COLORRES_FIXED_PALETTE | COLORRES_NEAREST, nullptr, 0), KSUCCESS);
  Zv_SetUserMatchTable(previous);
  EXPECT_EQ(pictureOf(result).pixels, (std::vector<uint32_t>{5, 2, 1}));
}

TEST(ColorReduction, DescriptionCarriesOver) {
  std::mt19937 random(234);
  for (const bool inPlace : {false, true}) {
    TestBitmap source(21, 6, 24), result;
    ASSERT_TRUE(source.allocated());
    fillWithNoise(source, random);
    source.ViewPerspective = VIEW_TURNED_90;
    source.XResolution = 301;
    source.YResolution = 302;
    source.DitheringMethod = 3;
    source.Flags |= BMF_PLAYBACK_TRANSPARENT;
    source.PlaybackLeft = 5;
    source.PlaybackDelay = 70;
    source.PlaybackTransparentColor = 0x102030;
    const RECT rect = {3, 1, 9, 5};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&source, nullptr, &rect, CombineSet), KSUCCESS);
    BitmapHandle* destination = inPlace ? nullptr : &result;
    ASSERT_EQ(Zv_ColorResBitmap(&source, destination, 8, COLORRES_FIXED_PALETTE, nullptr, 0), KSUCCESS);
    const BitmapHandle& made = inPlace ? source : result;
    EXPECT_EQ(source.BitsPerPixel, inPlace ? 8 : 24);
    EXPECT_EQ(made.BitsPerPixel, 8);
    EXPECT_EQ(made.Width, 21);
    EXPECT_EQ(made.Height, 6);
    EXPECT_EQ(made.ViewPerspective, VIEW_TURNED_90);
    EXPECT_EQ(made.XResolution, 301);
    EXPECT_EQ(made.YResolution, 302);
    EXPECT_EQ(made.DitheringMethod, 3);
    EXPECT_EQ(made.Flags & BMF_PLAYBACK_TRANSPARENT, unsigned{BMF_PLAYBACK_TRANSPARENT});
    EXPECT_EQ(made.PlaybackLeft, 5);
    EXPECT_EQ(made.PlaybackDelay, 70u);
    EXPECT_EQ(made.PlaybackTransparentColor, 0x102030u);
    RECT bounds;
    ASSERT_EQ(Zv_GetBitmapRgnBounds(&made, nullptr, &bounds), KSUCCESS);
    EXPECT_TRUE(EqualRect(&bounds, &rect));
    EXPECT_NE(source.Region, result.Region);
  }
}

// A palette index of a frame names the same colour in the copy.
TEST(ColorReduction, PlaybackColorsFollowThePalette) {
  TestBitmap source(4, 4, 4), result;
  ASSERT_TRUE(source.allocated());
  source.PlaybackBackground = 0x01000009;  // bright red in the fixed palette of 4 bits
  ASSERT_EQ(Zv_ColorResBitmap(&source, &result, 3, COLORRES_FIXED_PALETTE, nullptr, 0), KSUCCESS);
  EXPECT_EQ(result.PlaybackBackground, 0x01000004u);
  TestBitmap direct;
  ASSERT_EQ(Zv_ColorResBitmap(&source, &direct, 24, 0, nullptr, 0), KSUCCESS);
  EXPECT_EQ(direct.PlaybackBackground, 0x0000FFu);
}

TEST(ColorReduction, CallbackIsToldAndObeyed) {
  std::mt19937 random(235);
  TestBitmap source(9, 4, 24);
  ASSERT_TRUE(source.allocated());
  fillWithNoise(source, random);
  const Snapshot before(source);
  for (size_t stopAtCall = 1; stopAtCall <= 5; ++stopAtCall) {
    const ProgressLog stop(stopAtCall, 77);
    EXPECT_EQ(Zv_ColorResBitmap(&source, nullptr, 8, 0, nullptr, 0), 77);
    EXPECT_TRUE(before.unchanged());
  }
  const ProgressLog log;
  EXPECT_EQ(Zv_ColorResBitmap(&source, nullptr, 8, 0, nullptr, 0), KSUCCESS);
  EXPECT_EQ(log.percents, (std::vector<int>{0, 25, 50, 75, 100}));
}

TEST(ColorReduction, SourceStaysWholeWhenRefused) {
  std::mt19937 random(236);
  for (const int options : {0, COLORRES_NEAREST | COLORRES_FIXED_PALETTE, int{COLORRES_GRAY_PALETTE}}) {
    refuseEachResource({.leastPoints = 4}, [&](RefusalRound& round) {
      TestBitmap source(19, 7, 24);
      fillWithNoise(source, random);
      round.keeps(source);
      round.run([&] { return Zv_ColorResBitmap(&source, nullptr, 4, static_cast<unsigned>(options), nullptr, 0); });
    });
  }
}

}  // namespace
