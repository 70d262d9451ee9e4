// The search of a colour matcher. The distance to any entry bounds how far the nearest one can lie, so only entries
// within that distance in green are measured.
#include "color/color_matcher.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "color/color_distance.h"

namespace zavo {
namespace {

// So few are measured sooner than narrowed down.
constexpr unsigned fewEntries = 16;

int squaredDistance(const RGBQUAD& entry, unsigned red, unsigned green, unsigned blue) {
  const int r = static_cast<int>(red) - entry.rgbRed, g = static_cast<int>(green) - entry.rgbGreen,
            b = static_cast<int>(blue) - entry.rgbBlue;
  return r * r + g * g + b * b;
}

}  // namespace

void ColorMatcher::prepare(const RGBQUAD* palette, unsigned count, const uint32_t* table) {
  palette_ = palette;
  count_ = count;
  table_ = table;
  // Every slot starts with the answer for black: true wherever black belongs, never asked for elsewhere.
  const uint32_t black = nearestIndex(palette, count, 0, 0, 0);
  std::fill(std::begin(known_), std::end(known_), black << 24);
  std::fill(std::begin(near_), std::end(near_), static_cast<uint8_t>(black));

  std::fill(std::begin(greenStart_), std::end(greenStart_), uint16_t{0});
  for (unsigned i = 0; i < count; ++i) ++greenStart_[palette[i].rgbGreen + 1];
  for (unsigned g = 1; g <= 256; ++g) greenStart_[g] = static_cast<uint16_t>(greenStart_[g] + greenStart_[g - 1]);
  uint16_t next[256];
  std::copy_n(greenStart_, 256, next);
  for (unsigned i = 0; i < count; ++i) {
    RGBQUAD& entry = byGreen_[next[palette[i].rgbGreen]++];
    entry = palette[i];
    entry.rgbReserved = static_cast<BYTE>(i);
  }
  std::fill_n(byGreen_ + count, 3, byGreen_[count - 1]);
}

uint8_t ColorMatcher::find(unsigned red, unsigned green, unsigned blue, unsigned startIndex) const {
  unsigned first = 0, end = count_;
  if (count_ > fewEntries) {
    const int bound = squaredDistance(palette_[startIndex], red, green, blue);
    const auto reach = static_cast<unsigned>(std::sqrt(static_cast<float>(bound))) + 1;
    first = greenStart_[green > reach ? green - reach : 0] & ~3u;
    end = greenStart_[std::min(green + reach, 255u) + 1];
  }

  const __m128i color = distanceOperand(red, green, blue);
  __m128i distances[maxEntries / 4];
  __m128i smallest = _mm_set1_epi32(INT_MAX);
  for (unsigned i = first; i < end; i += 4) {
    distances[i / 4] = distancesOfFour(byGreen_ + i, color);
    smallest = smallerOf(smallest, distances[i / 4]);
  }
  const int distance = smallestOf(smallest);
  Tie tie(distance, channelClass(red, green, blue));
  for (unsigned i = first; i < end; i += 4) {
    unsigned hits = lanesEqual(distances[i / 4], distance);
    for (unsigned k = i; hits != 0; ++k, hits >>= 1) {
      if ((hits & 1) != 0) tie.add(byGreen_[k]);
    }
  }
  return tie.winner();
}

uint8_t ColorMatcher::learn(uint32_t color) {
  const unsigned red = color >> 16, green = color >> 8 & 255, blue = color & 255;
  uint8_t& found = near_[(red >> 5) << 6 | (green >> 5) << 3 | blue >> 5];
  // Black and white have rules of their own.
  const bool special = color == 0 || color == 0xFFFFFF;
  found =
      special ? static_cast<uint8_t>(nearestIndex(palette_, count_, red, green, blue)) : find(red, green, blue, found);
  known_[color * 0x9E3779B1u >> (32 - slotBits)] = color | uint32_t{found} << 24;
  return found;
}

}  // namespace zavo
