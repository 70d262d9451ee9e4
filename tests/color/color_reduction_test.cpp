// Reducing colours: every source depth with every target, palette and method against the models, what carries over, and
// lists of bitmaps.
#include <zavo.h>

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>
#include <random>

#include "color/description.h"
#include "color/dither_model.h"
#include "support/progress_log.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

constexpr unsigned cubeColors = 216;

Palette cubePalette() {
  Palette palette;
  for (unsigned i = 0; i < cubeColors; ++i) palette.push_back(quad(i / 36 * 51, i / 6 % 6 * 51, i % 6 * 51));
  return palette;
}

// What is asked for.
struct Request {
  int bits;
  unsigned option;
  Palette given;
  unsigned count;
};

Request requestFor(const BitmapHandle& source, int bits, unsigned option, std::mt19937& random) {
  Request request = {bits, option, {}, 0};
  if (option == COLORRES_FIXED_PALETTE && random() % 3 == 0) request.count = cubeColors;
  if (option != COLORRES_GIVEN_PALETTE) return request;
  const int depth = bits >= 1 && bits <= 8 ? bits : 1;  // others do not look at it
  request.count = random() % 2 == 0 ? 1u << depth : random() % (1u << depth) + 1;
  request.given = noisePalette(request.count, random);
  const Palette own = entriesOf(source.Palette);
  const unsigned choice = random() % 3;
  if (choice == 0) std::copy_n(Zv_IntGetFixedPalette(depth), request.count, request.given.begin());
  if (choice == 1 && own.size() <= request.count) std::copy(own.rbegin(), own.rend(), request.given.begin());
  return request;
}

// The entries that the pixels choose from, and how.
struct Target {
  Palette colors;
  bool gray, optimised;
  int ditherKind = searched;
};

Target targetOf(const BitmapHandle& source, const Request& request, const Palette& result) {
  const bool gray = request.bits == 0 || request.option == COLORRES_GRAY_PALETTE;
  const bool narrower = request.option == 0 && source.BitsPerPixel > request.bits;
  Target target = {request.given, gray, !gray && (narrower || request.option == COLORRES_OPTIMISED_PALETTE)};
  if (gray) target.colors = grayPalette(result.size());
  if (target.optimised && source.BitsPerPixel <= 8 && source.ColorCount <= result.size()) {
    // A palette that has room is kept, sorted.
    target.optimised = false;
    target.colors = entriesOf(source.Palette);
    std::sort(target.colors.begin(), target.colors.end(), [](auto& a, auto& b) { return colorOf(a) < colorOf(b); });
    return target;
  }
  if (target.optimised) {
    // Those of fewer colours end in black entries that are none of their own.
    target.colors = result;
    while (target.colors.size() > 1 && colorOf(target.colors.back()) == Color{}) target.colors.pop_back();
    return target;
  }
  if (!gray && request.option == 0) target.colors = entriesOf(source.Palette);
  if (!gray && request.option == COLORRES_FIXED_PALETTE) {
    const RGBQUAD* fixed = Zv_IntGetFixedPalette(request.bits);
    const bool isCube = request.bits == 8 && request.count == cubeColors;
    target.colors = isCube ? cubePalette() : Palette(fixed, fixed + result.size());
    if (isCube) target.ditherKind = cube;
  }
  // A part of a fixed palette is not that palette: its dithering would give indexes beyond the part.
  const size_t count = target.colors.size();
  if (count > 1 && std::has_single_bit(count)) target.ditherKind = fixedBitsOf(target.colors);
  return target;
}

// A source that has no other colours than the target loses nothing: no pattern may show.
bool holdsAll(const Target& target, const BitmapHandle& source) {
  if (target.gray && target.colors.size() == 256) return true;
  const Palette own = entriesOf(source.Palette);
  return source.BitsPerPixel <= 8 && std::all_of(own.begin(), own.end(), [&](const RGBQUAD& entry) {
           const unsigned level = brightness(colorOf(entry));
           const Color wanted = target.gray ? Color{level, level, level} : colorOf(entry);
           return std::any_of(target.colors.begin(), target.colors.end(),
                              [&](const RGBQUAD& c) { return colorOf(c) == wanted; });
         });
}

void expectReduced(BitmapHandle& source, BitmapHandle& result, const Request& request, bool nearest,
                   const unsigned* table) {
  const Palette palette = entriesOf(result.Palette);
  const Target target = targetOf(source, request, palette);
  const auto count = static_cast<unsigned>(target.colors.size());
  ASSERT_EQ(palette.size(), 1u << result.BitsPerPixel);
  for (size_t i = 0; i < palette.size(); ++i) {
    ASSERT_EQ(colorOf(palette[i]), i < count ? colorOf(target.colors[i]) : Color{}) << "entry " << i;
  }
  const bool dithers = !nearest && source.DitheringMethod >= 1 && !holdsAll(target, source);
  if (!dithers && target.optimised) return;  // those have tests of their own
  EXPECT_TRUE(!dithers || paddingIsZero(result));
  DitherModel model(source.Width, source.DitheringMethod, target.colors, target.ditherKind);
  const std::vector<Color> colors = colorsOf(source);
  const Picture picture = pictureOf(result);
  for (int y = 0; y < picture.height; ++y) {
    std::vector<Color> row(colors.begin() + y * picture.width, colors.begin() + (y + 1) * picture.width);
    for (Color& c : row) {
      if (target.gray) c = {brightness(c), brightness(c), brightness(c)};
    }
    const std::vector<unsigned> dithered = model.dither(row.data());
    for (int x = 0; x < picture.width; ++x) {
      const Color& c = row[static_cast<size_t>(x)];
      const bool listed = table != nullptr && !target.gray && source.BitsPerPixel > 8;
      unsigned found = listed ? table[c.red / 8 << 10 | c.green / 8 << 5 | c.blue / 8] - 1 : count;
      if (found >= count) found = Zv_FindPaletteIndex(target.colors.data(), count, c.red, c.green, c.blue);
      ASSERT_LT(picture.at(x, y), count);
      if (dithers) {
        ASSERT_EQ(picture.at(x, y), dithered[static_cast<size_t>(x)]) << "at " << x << ", " << y;
      } else {
        ASSERT_EQ(colorOf(palette[picture.at(x, y)]), colorOf(palette[found])) << "at " << x << ", " << y;
      }
    }
  }
}

TEST(ColorReduction, EveryFormatPaletteAndMethodFollowsTheModels) {
  std::mt19937 random(231);
  std::vector<unsigned> table(32768);
  for (unsigned& entry : table) entry = random() % 300;
  unsigned number = 0;
  for (const int depth : allDepths) {
    for (const int bits : {0, 1, 2, 3, 4, 5, 6, 7, 8, 16, 24, 32}) {
      for (const unsigned option : {0u, COLORRES_GIVEN_PALETTE + 0u, COLORRES_FIXED_PALETTE + 0u,
                                    COLORRES_GRAY_PALETTE + 0u, COLORRES_OPTIMISED_PALETTE + 0u}) {
        for (int k = 0; k < 3; ++k, ++number) {
          TestBitmap source(static_cast<int>(random() % 90) + 1, 5, depth), result;
          if (depth <= 8 && random() % 3 != 0) setPalette(source, noisePalette(source.ColorCount, random));
          if (depth > 8 && random() % 2 == 0) source.ColorOrder = ORDER_RED_FIRST;
          fillWithPicture(source, random);
          source.DitheringMethod = static_cast<int>(random() % 9);
          const unsigned order = random() % 2 == 0 ? COLORRES_BLUE_FIRST : 0;
          const bool nearest = random() % 4 == 0;
          const Request request = requestFor(source, bits, option, random);
          SCOPED_TRACE(testing::Message() << "case " << number << ": " << depth << " to " << bits << " bits, option "
                                          << option << ", " << request.count << " colours, method "
                                          << source.DitheringMethod << (nearest ? ", nearest" : ""));
          const Format format = formatOf(source);
          unsigned* const matches = number % 5 == 0 ? table.data() : nullptr;
          Zv_SetUserMatchTable(matches);
          const int status =
              Zv_ColorResBitmap(&source, &result, bits, option | order | (nearest ? COLORRES_NEAREST : 0),
                                request.given.data(), request.count);
          Zv_SetUserMatchTable(nullptr);
          ASSERT_EQ(status, KSUCCESS);
          EXPECT_EQ(result.BitsPerPixel, bits == 0 ? 8 : bits);
          EXPECT_EQ(result.ColorOrder, bits > 8 && order != 0 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST);
          if (bits <= 8) {
            expectReduced(source, result, request, nearest, matches);
          } else {
            Picture expected = pictureOf(source);
            for (uint32_t& pixel : expected.pixels) pixel = convertedPixel(pixel, format, formatOf(result));
            EXPECT_EQ(pictureOf(result), expected);
          }
          if (HasFailure()) return;
        }
      }
    }
  }
}

TEST(ColorReduction, DescriptionCarriesOver) {
  for (const int depth : {2, 24}) {
    for (const int bits : {1, 5, 8, 32}) {
      for (const bool inPlace : {false, true}) {
        SCOPED_TRACE(testing::Message() << depth << " to " << bits << " bits" << (inPlace ? " in place" : ""));
        TestBitmap source(21, 6, depth), result;
        describe(source, VIEW_TURNED_90);
        const RECT rect = {3, 1, 9, 5};
        ASSERT_EQ(Zv_SetBitmapRgnRect(&source, nullptr, &rect, CombineSet), KSUCCESS);
        const RegionExtent region = regionExtentOf(source);
        const BitmapHandle before = source;
        ASSERT_EQ(Zv_ColorResBitmap(&source, inPlace ? nullptr : &result, bits, COLORRES_FIXED_PALETTE, nullptr, 0),
                  KSUCCESS);
        EXPECT_EQ(source.BitsPerPixel, inPlace ? bits : depth);
        const BitmapHandle& made = inPlace ? source : result;
        expectDescribed(made, before, bits);
        EXPECT_EQ(made.DitheringMethod, 3);
        EXPECT_TRUE(regionExtentOf(made) == region);
        EXPECT_NE(source.Region, result.Region);
      }
    }
  }
}

TEST(ColorReduction, RefusesWhatItCannotDoAndStopsWithoutATrace) {
  TestBitmap source(9, 4, 24);
  const Palette palette(256);
  BitmapHandle empty;
  Zv_InitBitmap(&empty, 4, 4, 24);
  const struct {
    BitmapHandle* source;
    int bits;
    unsigned options;
    const RGBQUAD* palette;
    unsigned count;
    int status;
  } cases[] = {
      {nullptr, 9, 0x30, nullptr, 0, KERR_BAD_BITMAP},
      {&empty, 8, 0, nullptr, 0, KERR_BAD_BITMAP},
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
  const Snapshot before(source);
  for (size_t call = 1; call <= 5; ++call) {
    const ProgressLog stop(call, 77);
    EXPECT_EQ(Zv_ColorResBitmap(&source, nullptr, 8, 0, nullptr, 0), 77);
    EXPECT_TRUE(before.unchanged());
  }
  const ProgressLog log;
  EXPECT_EQ(Zv_ColorResBitmap(&source, nullptr, 8, 0, nullptr, 0), KSUCCESS);
  EXPECT_EQ(log.percents, (std::vector<int>{0, 25, 50, 75, 100}));
}

TEST(ColorReduction, OfAListIsAllOrNothing) {
  BitmapListHandle list = nullptr;
  EXPECT_EQ(Zv_ColorResBitmapList(list, 8, 0, nullptr, 0), KERR_BAD_PARAMETER);
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  EXPECT_EQ(Zv_ColorResBitmapList(list, 8, 0, nullptr, 0), KSUCCESS);
  BitmapHandle items[3];
  for (unsigned i = 0; i < 3; ++i) {
    constexpr int depths[] = {24, 4, 16};
    Zv_CreateBitmap(&items[i], ALLOC_MEMORY, 13, 4, depths[i], ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT);
    Zv_InsertBitmapListItem(list, i, &items[i]);
  }
  const Snapshot before[] = {Snapshot(items[0]), Snapshot(items[1]), Snapshot(items[2])};
  EXPECT_EQ(Zv_ColorResBitmapList(list, 9, 0, nullptr, 0), KERR_BAD_BPP);
  EXPECT_EQ(Zv_ColorResBitmapList(list, 8, 0x30, nullptr, 0), KERR_BAD_PARAMETER);
  {
    const ProgressLog stop(11, -99);  // in the third item
    EXPECT_EQ(Zv_ColorResBitmapList(list, 4, COLORRES_OPTIMISED_PALETTE, nullptr, 0), -99);
  }
  for (unsigned i = 0; i < 3; ++i) {
    Zv_GetBitmapListItem(list, i, &items[i]);
    EXPECT_TRUE(before[i].unchanged());
  }
  const ProgressLog log;
  EXPECT_EQ(Zv_ColorResBitmapList(list, 6, 0, nullptr, 0), KSUCCESS);
  EXPECT_EQ(log.percents, (std::vector<int>{0, 8, 16, 25, 33, 41, 50, 58, 66, 75, 83, 91, 100}));
  for (unsigned i = 0; i < 3; ++i) {
    Zv_GetBitmapListItem(list, i, &items[i]);
    EXPECT_EQ(items[i].BitsPerPixel, 6);
  }
  // One whose palette fits keeps it.
  EXPECT_EQ(Zv_CompareHandleToPalette(items[1].Palette, Zv_IntGetFixedPalette(4), 16), 1);
  Zv_InsertBitmapListItem(list, 1, nullptr);
  EXPECT_EQ(Zv_ColorResBitmapList(list, 8, 0, nullptr, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(items[0].BitsPerPixel, 6);
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
}

}  // namespace
