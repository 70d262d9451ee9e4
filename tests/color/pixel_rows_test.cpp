// The vector row functions give the same bytes as the plain ones, in place and from row to row.
#include "color/pixel_rows.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace zavo;
using Bytes = std::vector<uint8_t>;

constexpr PixelSize sizes[] = {PixelSize::gray8, PixelSize::bits16, PixelSize::bits24, PixelSize::bits32};
constexpr uint8_t sentinel = 0xC5;

size_t bytesOf(PixelSize size) {
  return static_cast<size_t>(size) + 1;
}

// Runs a function from one row to another, or in place, in a buffer of sentinel bytes, and gives the whole buffer.
Bytes run(PixelRowFunction function, const Bytes& row, size_t destinationBytes, unsigned width, size_t offset,
          bool inPlace) {
  Bytes source(offset + std::max(row.size(), destinationBytes) + 64, sentinel);
  std::copy(row.begin(), row.end(), source.begin() + static_cast<ptrdiff_t>(offset));
  if (inPlace) {
    function(source.data() + offset, source.data() + offset, width);
    return source;
  }
  const Bytes before = source;
  Bytes destination(offset + destinationBytes + 64, sentinel);
  function(destination.data() + offset, source.data() + offset, width);
  EXPECT_EQ(source, before);
  return destination;
}

TEST(PixelRows, VectorAndPlainFunctionsAgree) {
  if (!__builtin_cpu_supports("ssse3")) GTEST_SKIP() << "this processor has no SSSE3";
  std::mt19937 random(3);
  unsigned compared = 0;
  for (const PixelSize source : sizes) {
    for (const PixelSize destination : sizes) {
      for (const bool swap : {false, true}) {
        const PixelRowFunction fast = ssse3PixelRows.find(source, destination, swap);
        const PixelRowFunction plain = plainPixelRows.find(source, destination, swap);
        if (fast == nullptr) continue;
        ASSERT_NE(plain, nullptr);
        SCOPED_TRACE(testing::Message() << bytesOf(source) << " bytes to " << bytesOf(destination) << " swap " << swap);
        for (unsigned width = 1; width <= 130; ++width) {
          Bytes row(width * bytesOf(source));
          for (uint8_t& byte : row) byte = static_cast<uint8_t>(random());
          const size_t offset = random() % 17;
          for (const bool inPlace : {false, true}) {
            ASSERT_EQ(run(fast, row, width * bytesOf(destination), width, offset, inPlace),
                      run(plain, row, width * bytesOf(destination), width, offset, inPlace))
                << width;
          }
        }
        ++compared;
      }
    }
  }
  EXPECT_EQ(compared, 27u);
}

}  // namespace
