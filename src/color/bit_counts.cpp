// The number of 1 bits of every byte.
#include <zavo.h>

#include <array>
#include <bit>

namespace {

constexpr auto bitCounts = [] {
  std::array<unsigned char, 256> counts{};
  for (unsigned v = 0; v < 256; ++v) counts[v] = static_cast<unsigned char>(std::popcount(v));
  return counts;
}();

}  // namespace

const unsigned char* ZAVO_CALL Zv_Get1BitOnTable() {
  return bitCounts.data();
}
