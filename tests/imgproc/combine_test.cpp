// Two pictures combined, against a model that goes pixel by pixel.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>

#include "imgproc/pixel_model.h"
#include "support/refusals.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

bool isArithmetic(unsigned operation) {
  return (operation >> 4 & 15) > 3;
}

unsigned operand(unsigned value, unsigned change) {
  const unsigned changed[] = {value, ~value, 0, ~0u};
  return changed[change];
}

// The table of operators on values of 8 bits.
unsigned combined(unsigned operation, unsigned source, unsigned destination) {
  const auto s = static_cast<int>(operand(source, operation & 3) & 255);
  const auto d = static_cast<int>(operand(destination, operation >> 8 & 3) & 255);
  const int results[] = {s & d,
                         s | d,
                         s ^ d,
                         s,
                         std::min(s + d, 255),
                         std::max(s - d, 0),
                         std::max(d - s, 0),
                         std::abs(s - d),
                         s * d / 255,
                         (s + d) / 2,
                         std::min(s, d),
                         std::max(s, d)};
  const auto result = static_cast<unsigned>(results[operation >> 4 & 15]);
  return (operation & 0x1000 ? ~result : result) & 255;
}

// Every byte of a pixel by itself.
uint32_t combinedBytes(unsigned operation, uint32_t source, uint32_t destination, int bytes) {
  uint32_t result = 0;
  for (int shift = 0; shift < 8 * bytes; shift += 8) {
    result |= combined(operation, source >> shift & 255, destination >> shift & 255) << shift;
  }
  return result;
}

// What becomes of a destination pixel.
uint32_t combinedPixel(unsigned operation, uint32_t source, const Format& sourceFormat, uint32_t destination,
                       const Format& format) {
  if (!isArithmetic(operation)) {
    const uint32_t result = combinedBytes(operation, converted(source, sourceFormat, format), destination, 4);
    return format.depth == 32 ? result : result & ((1u << format.depth) - 1);
  }
  // Arithmetic is on levels of 8 bits, and colours keep their alpha.
  const Format levels = {format.depth == 8 ? 0 : std::max(format.depth, 24), format.order, {}};
  const uint32_t result =
      combinedBytes(operation, converted(source, sourceFormat, levels), converted(destination, format, levels),
                    levels.depth == 0 ? 1 : levels.depth / 8);
  const uint32_t pixel = converted(result, levels, format);
  const uint32_t alpha = format.depth == 32 ? 0xFF : format.depth == 16 ? 0x80 : 0;
  return (pixel & ~alpha) | (destination & alpha);
}

struct Rectangle {
  int left, top, width, height, sourceLeft, sourceTop;
};

Picture model(BitmapHandle& destination, BitmapHandle& source, const Rectangle& r, unsigned operation) {
  const Format format = formatOf(destination);
  const Format sourceFormat = formatOf(source);
  Picture result = pictureOf(destination);
  const Picture sourcePicture = pictureOf(source);
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x) {
      if (x < r.left || x - int64_t{r.left} >= r.width || y < r.top || y - int64_t{r.top} >= r.height) continue;
      const int64_t column = int64_t{x} - r.left + r.sourceLeft;
      const int64_t row = int64_t{y} - r.top + r.sourceTop;
      if (column < 0 || row < 0 || column >= 100000 || row >= 100000) continue;
      auto sourceX = static_cast<int>(column);
      auto sourceY = static_cast<int>(row);
      Zv_PointToBitmap(&source, destination.ViewPerspective, &sourceX, &sourceY);
      if (sourceX < 0 || sourceY < 0 || sourceX >= source.Width || sourceY >= source.Height) continue;
      if (Zv_BitmapHasRgn(&destination) && Zv_IsPtInBitmapRgn(&destination, y, x) != 1) continue;
      if (Zv_BitmapHasRgn(&source) && Zv_IsPtInBitmapRgn(&source, sourceY, sourceX) != 1) continue;
      result.at(x, y) =
          combinedPixel(operation, sourcePicture.at(sourceX, sourceY), sourceFormat, result.at(x, y), format);
    }
  }
  return result;
}

int combine(BitmapHandle& destination, BitmapHandle& source, const Rectangle& r, unsigned operation) {
  return Zv_CombineBitmap(&destination, r.left, r.top, r.width, r.height, &source, r.sourceLeft, r.sourceTop,
                          operation);
}

std::vector<unsigned> allOperations() {
  std::vector<unsigned> operations;
  for (unsigned result = 0; result < 2; ++result) {
    for (unsigned destination = 0; destination < 4; ++destination) {
      for (unsigned op = 0; op < 12; ++op) {
        for (unsigned source = 0; source < 4; ++source) {
          operations.push_back(result << 12 | destination << 8 | op << 4 | source);
        }
      }
    }
  }
  return operations;
}

TEST(Combine, EveryOperationAtEveryDepth) {
  std::mt19937 random(640);
  for (const int bits : allDepths) {
    TestBitmap destination(21, 3, bits), source(21, 3, bits);
    if (bits == 8) makeGray(destination), makeGray(source);
    for (const unsigned operation : allOperations()) {
      SCOPED_TRACE(testing::Message() << bits << " bits, operation " << std::hex << operation);
      fillWithNoise(destination, random);
      fillWithNoise(source, random);
      const Rectangle r = {1, 0, 19, 3, 1, 0};
      if (bits < 8 && isArithmetic(operation)) {
        const Snapshot before(destination);
        EXPECT_EQ(combine(destination, source, r, operation), KERR_BAD_BPP);
        EXPECT_TRUE(before.unchanged());
        continue;
      }
      const Picture expected = model(destination, source, r, operation);
      ASSERT_EQ(combine(destination, source, r, operation), KSUCCESS);
      ASSERT_NO_FATAL_FAILURE(expectSame(pictureOf(destination), expected));
    }
  }
}

TEST(Combine, LevelsAreWorkedOnAcrossTheirWholeRange) {
  TestBitmap destination(256, 256, 8), source(256, 256, 8);
  makeGray(destination);
  makeGray(source);
  for (const unsigned op : {0x40u, 0x50u, 0x60u, 0x70u, 0x80u, 0x90u, 0xA0u, 0xB0u}) {
    for (int y = 0; y < 256; ++y) {
      uint8_t rising[256], level[256];
      for (int x = 0; x < 256; ++x) rising[x] = static_cast<uint8_t>(x), level[x] = static_cast<uint8_t>(y);
      Zv_PutBitmapRow(&destination, rising, static_cast<unsigned>(y), 256);
      Zv_PutBitmapRow(&source, level, static_cast<unsigned>(y), 256);
    }
    ASSERT_EQ(combine(destination, source, {0, 0, 256, 256, 0, 0}, op), KSUCCESS);
    const Picture picture = pictureOf(destination);
    for (int y = 0; y < 256; ++y) {
      for (int x = 0; x < 256; ++x) {
        ASSERT_EQ(picture.at(x, y), combined(op, static_cast<unsigned>(y), static_cast<unsigned>(x))) << x << " " << y;
      }
    }
  }
}

TEST(Combine, AnyRectanglesOfAnyTwoBitmaps) {
  const std::vector<unsigned> operations = allOperations();
  int refused = 0;
  for (unsigned number = 0; number < 1500; ++number) {
    std::mt19937 random(number);
    const int bits = allDepths[random() % std::size(allDepths)];
    const int sourceBits = random() % 3 == 0 ? bits : allDepths[random() % std::size(allDepths)];
    const unsigned operation = random() % 3 == 0 ? 0x30 : operations[random() % operations.size()];
    const int kinds[] = {ALLOC_MEMORY, ALLOC_MEMORY | ALLOC_RUNLENGTH};
    TestBitmap destination(static_cast<int>(random() % 70) + 1, static_cast<int>(random() % 12) + 1, bits,
                           kinds[random() % 2]);
    TestBitmap source(static_cast<int>(random() % 70) + 1, static_cast<int>(random() % 12) + 1, sourceBits,
                      kinds[random() % 2]);
    makeRandom(destination, random);
    makeRandom(source, random);
    const Rectangle r = {nearEdge(random, destination.Width), nearEdge(random, destination.Height),
                         std::max(0, nearEdge(random, 60)),   std::max(0, nearEdge(random, 12)),
                         nearEdge(random, source.Width / 2),  nearEdge(random, source.Height / 2)};
    SCOPED_TRACE(testing::Message() << "case " << number << ": " << sourceBits << " bits onto " << bits
                                    << ", perspective " << source.ViewPerspective << " onto "
                                    << destination.ViewPerspective << ", operation " << std::hex << operation);
    const Snapshot sourceBefore(source);
    const Snapshot before(destination);
    const bool levels = bits > 8 || Zv_IsGrayScaleBitmap(&destination) != 0;
    if (isArithmetic(operation) && (bits < 8 || !levels)) {
      EXPECT_EQ(combine(destination, source, r, operation), KERR_BAD_BPP);
      EXPECT_TRUE(before.unchanged());
      ++refused;
      continue;
    }
    const Picture expected = model(destination, source, r, operation);
    ASSERT_EQ(combine(destination, source, r, operation), KSUCCESS);
    ASSERT_NO_FATAL_FAILURE(expectSame(pictureOf(destination), expected));
    EXPECT_TRUE(sourceBefore.unchanged());
  }
  EXPECT_LT(refused, 700) << "too few cases did anything";
}

// Rows are worked on in pieces.
TEST(Combine, LongRows) {
  std::mt19937 random(644);
  for (const int bits : allDepths) {
    for (const bool sameDepth : {true, false}) {
      const int sourceBits = sameDepth ? bits : bits == 1 ? 3 : 1;
      const int width = sameDepth ? 18000 / bits + 700 : 700;
      SCOPED_TRACE(testing::Message() << sourceBits << " bits onto " << bits << ", width " << width);
      TestBitmap destination(width, 1, bits), source(width, 1, sourceBits);
      fillWithNoise(destination, random);
      fillWithNoise(source, random);
      if (bits == 8) makeGray(destination);
      const Rectangle r = {3, 0, width - 9, 1, 5, 0};
      for (const unsigned operation : {COMBINE_XOR, COMBINE_COPY, COMBINE_ADD}) {
        if (bits < 8 && isArithmetic(operation)) continue;
        const Picture expected = model(destination, source, r, operation);
        ASSERT_EQ(combine(destination, source, r, operation), KSUCCESS);
        ASSERT_NO_FATAL_FAILURE(expectSame(pictureOf(destination), expected));
      }
    }
  }
}

TEST(Combine, ABitmapWithItself) {
  std::mt19937 random(641);
  for (const int bits : allDepths) {
    for (const Rectangle& r : {Rectangle{5, 2, 20, 5, 3, 1}, {3, 1, 20, 5, 5, 2}, {0, 0, 40, 9, 1, 0}}) {
      SCOPED_TRACE(testing::Message() << bits << " bits from " << r.sourceLeft << ", " << r.sourceTop);
      TestBitmap bitmap(33, 9, bits);
      fillWithNoise(bitmap, random);
      const Picture expected = model(bitmap, bitmap, r, COMBINE_COPY);
      // A second record of the same pixels, too, and one that sees them the other way round.
      BitmapHandle alias = bitmap;
      const bool useAlias = random() % 2 == 0;
      ASSERT_EQ(combine(bitmap, useAlias ? alias : bitmap, r, COMBINE_COPY), KSUCCESS);
      expectSame(pictureOf(bitmap), expected);
      alias = bitmap;
      alias.ViewPerspective = VIEW_BOTTOM_UP;
      const Picture flipped = model(bitmap, alias, r, COMBINE_XOR);
      ASSERT_EQ(combine(bitmap, alias, r, COMBINE_XOR), KSUCCESS);
      expectSame(pictureOf(bitmap), flipped);
    }
  }
}

TEST(Combine, WithoutAResourceNothingIsDone) {
  std::mt19937 random(643);
  TestBitmap destination(40, 12, 8), source(40, 12, 1, ALLOC_RUNLENGTH);
  fillWithNoise(destination, random);
  fillWithNoise(source, random);
  source.ViewPerspective = VIEW_TURNED_270;
  giveRandomRegion(destination, random);
  giveRandomRegion(source, random);
  refuseEachResource({.survived = {"GlobalReAlloc"}, .leastPoints = 10}, [&](RefusalRound& round) {
    round.keeps(destination);
    round.keeps(source);
    round.run([&] { return combine(destination, source, {0, 0, 40, 12, 0, 0}, COMBINE_XOR); });
  });
}

TEST(Combine, AbsurdRectanglesAreCutOrRefused) {
  std::mt19937 random(642);
  TestBitmap destination(20, 10, 24), source(20, 10, 24);
  fillWithNoise(source, random);
  const Rectangle cut[] = {
      {0, 0, INT_MAX, INT_MAX, 0, 0},
      {INT_MIN, INT_MIN, INT_MAX, INT_MAX, 0, 0},
      {INT_MIN, 0, INT_MAX, 5, INT_MIN, 0},
      {INT_MAX, 0, INT_MAX, 5, INT_MAX, 0},
      {3, 3, INT_MAX, INT_MAX, -4, -4},
      {-4, -4, INT_MAX, INT_MAX, 3, 3},
      {0, 0, 0, 10, 0, 0},
      {0, INT_MAX, 20, 10, 0, INT_MIN},
  };
  for (const Rectangle& r : cut) {
    SCOPED_TRACE(testing::Message() << r.left << ", " << r.top);
    const Picture expected = model(destination, source, r, COMBINE_COPY);
    EXPECT_EQ(combine(destination, source, r, COMBINE_COPY), KSUCCESS);
    expectSame(pictureOf(destination), expected);
  }
  const Snapshot before(destination);
  EXPECT_EQ(combine(destination, source, {0, 0, -1, 5, 0, 0}, COMBINE_COPY), KERR_BAD_PARAMETER);
  EXPECT_EQ(combine(destination, source, {0, 0, 5, INT_MIN, 0, 0}, COMBINE_COPY), KERR_BAD_PARAMETER);
  for (const unsigned operation : {0x4u, 0xFu, 0xC0u, 0xF0u, 0x400u, 0xF00u, 0x2000u, 0x10030u, 0x80000030u}) {
    EXPECT_EQ(combine(destination, source, {0, 0, 5, 5, 0, 0}, operation), KERR_BAD_PARAMETER) << operation;
  }
  BitmapHandle empty{};
  EXPECT_EQ(combine(empty, source, {}, COMBINE_COPY), KERR_BAD_BITMAP);
  EXPECT_EQ(combine(destination, empty, {}, COMBINE_COPY), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CombineBitmap(nullptr, 0, 0, 1, 1, &source, 0, 0, 0x30), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CombineBitmap(&destination, 0, 0, 1, 1, nullptr, 0, 0, 0x30), KERR_BAD_BITMAP);
  EXPECT_TRUE(before.unchanged());
  // Whether there are levels does not hang on the rectangle.
  TestBitmap indexes(20, 10, 8);
  EXPECT_EQ(combine(indexes, source, {0, 0, 0, 0, 0, 0}, COMBINE_ADD), KERR_BAD_BPP);
}

}  // namespace
