// The plain row functions, which stand in on processors without SSSE3, give the same bytes as the vector functions.
#include "color/pixel_rows.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace zavo;

constexpr PixelSize sizes[] = {PixelSize::gray8, PixelSize::bits16, PixelSize::bits24, PixelSize::bits32};

TEST(PixelRows, VectorAndPlainFunctionsAgree) {
  if (!__builtin_cpu_supports("ssse3")) GTEST_SKIP() << "this processor has no SSSE3";
  std::mt19937 random(3);
  unsigned compared = 0;
  for (const PixelSize source : sizes) {
    for (const PixelSize destination : sizes) {
      for (const bool swap : {false, true}) {
        const PixelRowFunction fast = ssse3PixelRows.find(source, destination, swap);
        if (fast == nullptr) continue;
        const size_t bytes = static_cast<size_t>(std::max(source, destination)) + 1;
        SCOPED_TRACE(testing::Message() << int(source) << " to " << int(destination) << " swap " << swap);
        for (unsigned width = 1; width <= 130; ++width) {
          std::vector<uint8_t> row(width * bytes + 16);
          for (uint8_t& byte : row) byte = static_cast<uint8_t>(random());
          std::vector<uint8_t> plain = row, vectors = row;
          plainPixelRows.find(source, destination, swap)(plain.data(), plain.data(), width);
          fast(vectors.data(), vectors.data(), width);
          const auto made = static_cast<ptrdiff_t>(width * (static_cast<size_t>(destination) + 1));
          ASSERT_TRUE(std::equal(plain.begin(), plain.begin() + made, vectors.begin())) << width;
          ASSERT_TRUE(std::equal(plain.end() - 16, plain.end(), row.end() - 16)) << "behind the row, " << width;
        }
        ++compared;
      }
    }
  }
  EXPECT_EQ(compared, 27u);
}

}  // namespace
