// Conversion of pixel rows: every pair of depths and orders against the model that works pixel by pixel.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "color/colors.h"

namespace {

using namespace zavotest;
using Bytes = std::vector<uint8_t>;

constexpr int depths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 16, 24, 32};
constexpr uint8_t sentinel = 0xC5;

int convert(uint8_t* row, int width, const Format& from, const Format& to) {
  const auto pointer = [](const Palette& palette) { return palette.empty() ? nullptr : palette.data(); };
  return Zv_ConvertBuffer(row, width, from.depth, to.depth, from.order, to.order, pointer(from.palette),
                          pointer(to.palette));
}

// The thread's match table decides where it has an entry that the destination's palette has, too.
uint32_t expectedPixel(uint32_t pixel, const Format& from, const Format& to, const std::vector<unsigned>& table) {
  if (!table.empty() && from.depth > 8 && to.depth > 0 && to.depth <= 8) {
    const Color c = colorOf(pixel, from);
    const unsigned entry = table[c.red / 8 << 10 | c.green / 8 << 5 | c.blue / 8] - 1;
    if (entry < 1u << to.depth) return entry;
  }
  return convertedPixel(pixel, from, to);
}

void expectModel(const Bytes& row, int width, const Format& from, const Format& to, size_t offset,
                 const std::vector<unsigned>& table) {
  const size_t used = std::max(from.rowBytes(width), to.rowBytes(width));
  Bytes buffer(offset + used + 32, sentinel);
  uint8_t* const result = buffer.data() + offset;
  std::copy(row.begin(), row.end(), result);
  ASSERT_EQ(convert(result, width, from, to), KSUCCESS);
  for (size_t x = 0; x < static_cast<size_t>(width); ++x) {
    const uint32_t pixel = readPixel(row.data(), x, from.bits());
    ASSERT_EQ(readPixel(result, x, to.bits()), expectedPixel(pixel, from, to, table)) << "pixel " << x;
  }
  ASSERT_EQ(std::count(buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(offset), sentinel), offset);
  ASSERT_EQ(std::count(result + used, result + used + 32, sentinel), 32) << "after the row";
}

TEST(ConvertBuffer, EveryPairOfFormatsAgreesWithTheModel) {
  std::mt19937 random(7);
  // Where palettes begin alike indexes stay as they are, even where an earlier entry has the same colour.
  Palette noise = noisePalette(256, random);
  noise[3] = noise[1];
  std::vector<unsigned> table(32768);
  for (unsigned& entry : table) entry = random() % 300;
  const std::vector<unsigned> none;
  const auto variants = [&](int depth) -> std::vector<Format> {
    if (depth == 0) return {{0, 7}};  // orders of grey are not looked at
    if (depth <= 8) return {{depth, -1}, {depth, 5, Palette(noise.begin(), noise.begin() + (1 << depth))}};
    return {{depth, ORDER_RED_FIRST}, {depth, ORDER_BLUE_FIRST}};
  };
  for (const int fromDepth : depths) {
    for (const int toDepth : depths) {
      for (const Format& from : variants(fromDepth)) {
        for (const Format& to : variants(toDepth)) {
          SCOPED_TRACE(testing::Message()
                       << from.depth << " order " << from.order << " to " << to.depth << " order " << to.order);
          // The last are longer than any work area inside.
          for (int k = 1; k <= 73; ++k) {
            const int width = k <= 70 ? k : k == 73 ? 2051 : 440 + k;
            Bytes row(from.rowBytes(width));
            // Few values make runs of one colour and colours that come back.
            for (uint8_t& byte : row) byte = static_cast<uint8_t>(k > 70 ? random() % 3 * 120 : random());
            Zv_SetUserMatchTable(k % 8 == 0 ? table.data() : nullptr);
            ASSERT_NO_FATAL_FAILURE(expectModel(row, width, from, to, random() % 5, k % 8 == 0 ? table : none))
                << width;
          }
        }
      }
    }
  }
  Zv_SetUserMatchTable(nullptr);
}

TEST(ConvertBuffer, RefusesBadArguments) {
  uint8_t row[64] = {1, 2, 3, 4};
  const struct {
    int width;
    Format from, to;
  } cases[] = {{0, {24, 1}, {32, 1}},  {-1, {24, 1}, {32, 1}}, {1, {9, 1}, {24, 1}},  {1, {24, 1}, {15, 1}},
               {1, {33, 1}, {24, 1}},  {1, {24, 1}, {64, 1}},  {1, {-1, 1}, {24, 1}}, {1, {24, 2}, {32, 1}},
               {1, {24, 1}, {32, -1}}, {1, {16, 2}, {8, 0}},   {1, {8, 0}, {16, 2}}};
  for (const auto& c : cases) {
    EXPECT_EQ(convert(row, c.width, c.from, c.to), KERR_BAD_PARAMETER) << c.from.depth << " to " << c.to.depth;
  }
  EXPECT_EQ(row[0], 1);
  EXPECT_EQ(convert(nullptr, 1, {24, 1}, {32, 1}), KERR_BAD_PARAMETER);
}

TEST(CalcConvertSize, IsTheLargestOfThreeRows) {
  const struct {
    unsigned widthA, bitsA, widthB, bitsB, bytes;
  } cases[] = {{10, 8, 10, 24, 32}, {10, 0, 10, 1, 12},    {100, 24, 10, 1, 300},
               {33, 1, 1, 1, 8},    {10, 1, 100, 24, 300}, {0x40000000, 32, 1, 1, 0xFFFFFFFC},
               {0, 8, 0, 8, 0},     {1, 1, 100, 0, 100},   {0xFFFFFFFF, 0xFFFFFFFF, 1, 1, 0xFFFFFFFC}};
  for (const auto& c : cases) {
    EXPECT_EQ(Zv_CalcConvertSize(c.widthA, c.bitsA, c.widthB, c.bitsB), c.bytes) << c.widthA << " of " << c.bitsA;
  }
}

}  // namespace
