// Two pictures combined, against a model that goes pixel by pixel.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>

#include "imgproc/pixel_model.h"
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
    const uint32_t result = combinedBytes(operation, convertedPixel(source, sourceFormat, format), destination, 4);
    return format.depth == 32 ? result : result & ((1u << format.depth) - 1);
  }
  // Arithmetic is on levels of 8 bits, and colours keep their alpha.
  const Format levels = {format.depth == 8 ? 0 : std::max(format.depth, 24), format.order};
  const uint32_t result =
      combinedBytes(operation, convertedPixel(source, sourceFormat, levels),
                    convertedPixel(destination, format, levels), levels.depth == 0 ? 1 : levels.depth / 8);
  const uint32_t pixel = convertedPixel(result, levels, format);
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

// Rectangles of bitmaps, of one bitmap and of two records of its pixels, against the model.
TEST(Combine, EveryOperationAtEveryDepth) {
  const std::vector<unsigned> operations = allOperations();
  unsigned number = 0;
  for (const int bits : allDepths) {
    for (const unsigned operation : operations) {
      std::mt19937 random(++number);
      const int kinds[] = {ALLOC_MEMORY, ALLOC_MEMORY | ALLOC_RUNLENGTH};
      const bool isLong = number % 23 == 0;  // rows are worked on in pieces
      const int sourceBits = random() % (isLong ? 2 : 3) == 0 ? bits : allDepths[random() % std::size(allDepths)];
      const int height = isLong ? 1 : static_cast<int>(random() % 8) + 1;
      const int width = isLong ? (bits == sourceBits ? 18000 / bits : 0) + 700 : random() % 70 + 1;
      TestBitmap destination(width, height, bits, kinds[random() % 2]);
      TestBitmap other(width + static_cast<int>(random() % 9), height, sourceBits, kinds[random() % 2]);
      for (TestBitmap* bitmap : {&destination, &other}) {
        isLong ? fillWithNoise(*bitmap, random) : makeRandom(*bitmap, random);
      }
      BitmapHandle alias = destination;
      alias.ViewPerspective = perspectives[random() % std::size(perspectives)];
      BitmapHandle* const sources[] = {&other, &other, &other, &other, &destination, &alias};
      BitmapHandle& source = *sources[random() % std::size(sources)];
      const auto place = [&](int size) {
        if (number % 9 == 0 && random() % 2 == 0) return random() % 2 == 0 ? INT_MAX : INT_MIN;
        return isLong || random() % 2 == 0 ? 0 : nearEdge(random, size);
      };
      const Rectangle r = {place(width),
                           place(height),
                           isLong || random() % 2 == 0 ? width : std::max(0, place(60)),
                           random() % 2 == 0 ? height : std::max(0, place(8)),
                           place(source.Width / 2),
                           place(source.Height / 2)};
      SCOPED_TRACE(testing::Message() << "case " << number << ": " << source.BitsPerPixel << " bits onto " << bits
                                      << ", perspective " << source.ViewPerspective << " onto "
                                      << destination.ViewPerspective << ", operation " << std::hex << operation);
      const Snapshot before(destination), otherBefore(other);
      const bool levels = bits > 8 || (bits == 8 && Zv_IsGrayScaleBitmap(&destination) != 0);
      if (isArithmetic(operation) && !levels) {
        // Whether there are levels does not hang on the rectangle.
        EXPECT_EQ(combine(destination, source, r, operation), KERR_BAD_BPP);
        EXPECT_TRUE(before.unchanged());
        continue;
      }
      const Picture expected = model(destination, source, r, operation);
      ASSERT_EQ(combine(destination, source, r, operation), KSUCCESS);
      ASSERT_NO_FATAL_FAILURE(expectSame(pictureOf(destination), expected));
      EXPECT_TRUE(otherBefore.unchanged());
    }
  }
}

TEST(Combine, RefusesBadArguments) {
  TestBitmap destination(20, 10, 24), source(20, 10, 24);
  BitmapHandle empty{};
  const Snapshot before(destination);
  EXPECT_EQ(combine(destination, source, {0, 0, -1, 5, 0, 0}, COMBINE_COPY), KERR_BAD_PARAMETER);
  EXPECT_EQ(combine(destination, source, {0, 0, 5, INT_MIN, 0, 0}, COMBINE_COPY), KERR_BAD_PARAMETER);
  for (const unsigned operation : {0x4u, 0xFu, 0xC0u, 0xF0u, 0x400u, 0xF00u, 0x2000u, 0x10030u, 0x80000030u}) {
    EXPECT_EQ(combine(destination, source, {0, 0, 5, 5, 0, 0}, operation), KERR_BAD_PARAMETER) << operation;
  }
  EXPECT_EQ(combine(empty, source, {}, COMBINE_COPY), KERR_BAD_BITMAP);
  EXPECT_EQ(combine(destination, empty, {}, COMBINE_COPY), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CombineBitmap(nullptr, 0, 0, 1, 1, &source, 0, 0, 0x30), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_CombineBitmap(&destination, 0, 0, 1, 1, nullptr, 0, 0, 0x30), KERR_BAD_BITMAP);
  EXPECT_TRUE(before.unchanged());
}

}  // namespace
