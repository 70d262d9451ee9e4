// The nearest-colour search and all that rests on it against a plain model.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>

#include "color/colors.h"

namespace {

using namespace zavotest;

int orderOf(const Color& c) {
  int order = 0;
  if (c.blue > c.red) order += 4;
  if (c.green < c.red && c.green < c.blue) order += 2;
  if (c.green > c.red && c.green > c.blue) order += 1;
  return order;
}

unsigned distance(const Color& a, const Color& b) {
  return (a.red - b.red) * (a.red - b.red) + (a.green - b.green) * (a.green - b.green) +
         (a.blue - b.blue) * (a.blue - b.blue);
}

unsigned modelSearch(const Palette& palette, const Color& wanted) {
  const auto last = static_cast<unsigned>(palette.size()) - 1;
  const bool first = colorOf(palette[0]) == wanted, atEnd = colorOf(palette[last]) == wanted;
  if (wanted == Color{0, 0, 0} && (first || atEnd)) return first ? 0 : last;
  if (wanted == Color{255, 255, 255} && (first || atEnd)) return atEnd ? last : 0;
  unsigned best = 0, least = distance(colorOf(palette[0]), wanted);
  for (unsigned i = 1; i <= last; ++i) {
    const unsigned here = distance(colorOf(palette[i]), wanted);
    const bool sameOrder = here != 0 && here == least && orderOf(colorOf(palette[i])) == orderOf(wanted);
    if (here < least || sameOrder) best = i, least = here;
  }
  return best;
}

// The search itself, and those of colour reduction, row conversion and match tables.
TEST(FindPaletteIndex, AgreesWithTheModel) {
  EXPECT_EQ(Zv_FindPaletteIndex(Zv_IntGetFixedPalette(1), 0, 1, 2, 3), 0xFFFFFFFF);
  EXPECT_EQ(Zv_FindPaletteIndex(nullptr, 5, 1, 2, 3), 0xFFFFFFFF);
  for (unsigned seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    // A coarse grid of channel values makes equal entries and equal distances common.
    const unsigned step = 1u << random() % 7;
    const auto channel = [&] { return std::min(255u, random() % 256 / step * step); };
    Palette palette(seed % 3 == 0 ? 256 : seed % 3 == 1 ? 1 + random() % 9 : 1 + random() % 300);
    for (RGBQUAD& entry : palette) entry = quad(channel(), channel(), channel(), random());
    if (seed % 5 == 0) palette.front() = palette.back() = seed % 2 == 0 ? quad(0, 0, 0) : quad(255, 255, 255);
    std::vector<unsigned> expected;
    // Many colours fill what the searches remember.
    const size_t pixels = seed % 60 == 0 ? 60000 : 100;
    std::vector<uint8_t> row(pixels * 3);
    for (size_t i = 0; i < pixels; ++i) {
      const unsigned offset = random() % 3 * step / 2;
      Color c = {std::min(255u, channel() + offset), std::min(255u, channel() + offset), channel()};
      if (i >= 100) c = {random() & 255, random() & 255, random() & 255};
      if (i < 2) c = i == 0 ? Color{0, 0, 0} : Color{255, 255, 255};
      // High bits of a channel are not looked at.
      const auto count = static_cast<unsigned>(palette.size());
      expected.push_back(Zv_FindPaletteIndex(palette.data(), count, c.red | seed << 8, c.green, c.blue | 0xF00));
      if (i < 100) {
        ASSERT_EQ(expected[i], modelSearch(palette, c)) << "pixel " << i;
      }
      writePixel(row.data(), i, 24, c.blue << 16 | c.green << 8 | c.red);
    }
    if (palette.size() > 256) continue;
    const auto width = static_cast<int>(pixels);
    TestBitmap source(width, 1, 24), reduced;
    Zv_PutBitmapRow(&source, row.data(), 0, static_cast<unsigned>(row.size()));
    ASSERT_EQ(Zv_ColorResBitmap(&source, &reduced, 8, COLORRES_GIVEN_PALETTE | COLORRES_NEAREST, palette.data(),
                                static_cast<unsigned>(palette.size())),
              KSUCCESS);
    ASSERT_EQ(pictureOf(reduced).pixels, expected);
    if (palette.size() < 256) continue;
    ASSERT_EQ(Zv_ConvertBuffer(row.data(), width, 24, 8, ORDER_BLUE_FIRST, 0, nullptr, palette.data()), KSUCCESS);
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), row.begin()));
  }
}

TEST(UserMatchTable, HoldsTheSearchOfEveryKey) {
  const RGBQUAD* palette = Zv_IntGetFixedPalette(4);
  for (const unsigned count : {16u, 0u}) {
    unsigned* table = Zv_CreateUserMatchTable(palette, count);
    ASSERT_NE(table, nullptr);
    for (unsigned key = 0; key < 32768; ++key) {
      const unsigned found = Zv_FindPaletteIndex(palette, count, (key >> 10) * 8, (key >> 5 & 31) * 8, (key & 31) * 8);
      ASSERT_EQ(table[key], found + 1);
    }
    EXPECT_EQ(Zv_SetUserMatchTable(table), nullptr);
    EXPECT_EQ(Zv_SetUserMatchTable(nullptr), table);
    EXPECT_EQ(Zv_FreeUserMatchTable(table), 1);
  }
  EXPECT_EQ(Zv_FreeUserMatchTable(nullptr), 1);
}

}  // namespace
