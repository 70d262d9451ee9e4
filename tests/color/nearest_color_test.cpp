// The nearest-colour search and the match table against a plain model.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

RGBQUAD quad(unsigned red, unsigned green, unsigned blue) {
  return {static_cast<BYTE>(blue), static_cast<BYTE>(green), static_cast<BYTE>(red), 0};
}

int orderOf(int red, int green, int blue) {
  int order = 0;
  if (blue > red) order += 4;
  if (green < red && green < blue) order += 2;
  if (green > red && green > blue) order += 1;
  return order;
}

unsigned modelSearch(const std::vector<RGBQUAD>& palette, int red, int green, int blue) {
  if (palette.empty()) return 0xFFFFFFFF;
  const auto holds = [&](size_t i, int level) {
    return palette[i].rgbRed == level && palette[i].rgbGreen == level && palette[i].rgbBlue == level;
  };
  const size_t last = palette.size() - 1;
  if (red == 0 && green == 0 && blue == 0) {
    if (holds(0, 0)) return 0;
    if (holds(last, 0)) return static_cast<unsigned>(last);
  }
  if (red == 255 && green == 255 && blue == 255) {
    if (holds(last, 255)) return static_cast<unsigned>(last);
    if (holds(0, 255)) return 0;
  }
  int best = -1, bestDistance = 0;
  for (size_t i = 0; i < palette.size() && (best < 0 || bestDistance != 0); ++i) {
    const int r = palette[i].rgbRed, g = palette[i].rgbGreen, b = palette[i].rgbBlue;
    const int distance = (red - r) * (red - r) + (green - g) * (green - g) + (blue - b) * (blue - b);
    const bool better = best < 0 || distance < bestDistance ||
                        (distance == bestDistance && orderOf(r, g, b) == orderOf(red, green, blue));
    if (better) best = static_cast<int>(i), bestDistance = distance;
  }
  return static_cast<unsigned>(best);
}

TEST(FindPaletteIndex, EndsTiesAndEmptyPalettes) {
  const RGBQUAD black = quad(0, 0, 0), white = quad(255, 255, 255), gray = quad(128, 128, 128);
  const struct {
    const char* what;
    std::vector<RGBQUAD> palette;
    unsigned red, green, blue, index;
  } cases[] = {
      {"black at both ends", {black, gray, black}, 0, 0, 0, 0},
      {"black at the end only", {gray, black, black}, 0, 0, 0, 2},
      {"black inside", {gray, black, black, gray}, 0, 0, 0, 1},
      {"white at both ends", {white, gray, white}, 255, 255, 255, 2},
      {"white at the start only", {white, white, gray}, 255, 255, 255, 0},
      {"exact match stops at the first", {gray, quad(5, 6, 7), quad(5, 6, 7)}, 5, 6, 7, 1},
      {"equal distance, later entry of the same class", {quad(90, 100, 100), quad(110, 100, 90)}, 100, 100, 95, 1},
      {"equal distance, later entry of another class", {quad(110, 100, 100), quad(90, 100, 100)}, 100, 100, 100, 0},
      {"equal distance, green highest", {quad(60, 50, 50), quad(50, 60, 50)}, 55, 60, 55, 1},
      {"equal distance, green lowest", {quad(50, 50, 60), quad(60, 40, 50)}, 55, 45, 55, 1},
      {"high bits are ignored", {black, quad(5, 6, 7)}, 0x105, 0xF06, 0x80000007, 1},
      {"empty", {}, 0, 0, 0, 0xFFFFFFFF},
  };
  for (const auto& c : cases) {
    const auto count = static_cast<unsigned>(c.palette.size());
    EXPECT_EQ(Zv_FindPaletteIndex(c.palette.data(), count, c.red, c.green, c.blue), c.index) << c.what;
  }
  EXPECT_EQ(Zv_FindPaletteIndex(nullptr, 0, 1, 2, 3), 0xFFFFFFFF);
}

TEST(FindPaletteIndex, AgreesWithTheModel) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    // A coarse grid of channel values makes equal entries and equal distances common.
    const unsigned step = 1u << random() % 7;
    const auto channel = [&] { return std::min(255u, random() % 256 / step * step); };
    std::vector<RGBQUAD> palette(1 + random() % 300);
    for (RGBQUAD& entry : palette) {
      entry = quad(channel(), channel(), channel());
      entry.rgbReserved = static_cast<BYTE>(random());
    }
    for (int i = 0; i < 50; ++i) {
      const unsigned offset = random() % 3 * step / 2;
      unsigned red = std::min(255u, channel() + offset), green = std::min(255u, channel() + offset), blue = channel();
      if (i == 0) red = green = blue = 0;
      if (i == 1) red = green = blue = 255;
      ASSERT_EQ(Zv_FindPaletteIndex(palette.data(), static_cast<unsigned>(palette.size()), red, green, blue),
                modelSearch(palette, static_cast<int>(red), static_cast<int>(green), static_cast<int>(blue)))
          << red << " " << green << " " << blue;
    }
  }
}

TEST(UserMatchTable, HoldsTheSearchOfEveryKey) {
  const RGBQUAD* palette = Zv_IntGetFixedPalette(4);
  unsigned* table = Zv_CreateUserMatchTable(palette, 16);
  ASSERT_NE(table, nullptr);
  for (unsigned key = 0; key < 32768; ++key) {
    ASSERT_EQ(table[key], 1 + Zv_FindPaletteIndex(palette, 16, (key >> 10) * 8, (key >> 5 & 31) * 8, (key & 31) * 8));
  }
  EXPECT_EQ(Zv_FreeUserMatchTable(table), 1);
  EXPECT_EQ(Zv_FreeUserMatchTable(nullptr), 1);

  unsigned* empty = Zv_CreateUserMatchTable(nullptr, 0);
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty[0], 0u);
  EXPECT_EQ(empty[32767], 0u);
  Zv_FreeUserMatchTable(empty);
}

DWORD WINAPI tableOfThread(void* found) {
  *static_cast<unsigned**>(found) = Zv_SetUserMatchTable(nullptr);
  return 0;
}

TEST(UserMatchTable, BelongsToTheThread) {
  unsigned first[1], second[1];
  EXPECT_EQ(Zv_SetUserMatchTable(first), nullptr);
  EXPECT_EQ(Zv_SetUserMatchTable(second), first);
  unsigned* found = first;
  HANDLE thread = CreateThread(nullptr, 0, tableOfThread, &found, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(Zv_SetUserMatchTable(nullptr), second);
}

}  // namespace
