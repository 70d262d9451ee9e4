// Finding the candidates of a cell, and the nearest of them, four at a time.
#include "color/color_cells.h"

#include <algorithm>
#include <bit>
#include <climits>

#include "color/color_distance.h"

namespace zavo {
namespace {

// Values of a cell that is not a single entry: the first group of candidates and above it the number of groups; or
// the whole palette, for black and white, which have rules of their own, and where there is no room for more groups.
constexpr uint32_t wholePalette = 0xFFFFFFFF;
constexpr unsigned groupCountShift = 24;
constexpr unsigned maxGroups = 0x4000;
constexpr unsigned maxGroupsOfCell = 8;
constexpr unsigned groupSize = 4;

constexpr short cellWidth = 8;

// Twice the middle of a cell, channel by channel; the middle lies between two whole values.
__m128i doubledMiddleOf(unsigned key) {
  const auto middle = [](unsigned part) { return part * 2 * cellWidth + cellWidth - 1; };
  return distanceOperand(middle(key >> 10), middle(key >> 5 & 31), middle(key & 31));
}

// How much farther from a colour of the cell two entries are than a rival is, in squared distance, where they come off
// best against it: in every channel, (entry - rival) * (entry + rival - 2 * colour) is smallest at an end of the cell.
// Four sums of two channels.
__m128i leastExcess(__m128i entries, __m128i rival, __m128i doubledMiddle) {
  const __m128i difference = _mm_sub_epi16(entries, rival);
  const __m128i sum = _mm_sub_epi16(_mm_add_epi16(entries, rival), doubledMiddle);
  const __m128i magnitude = _mm_max_epi16(difference, _mm_sub_epi16(_mm_setzero_si128(), difference));
  return _mm_sub_epi32(_mm_madd_epi16(difference, sum), _mm_madd_epi16(magnitude, _mm_set1_epi16(cellWidth - 1)));
}

// One bit for each of four entries that is no farther than the rival from some colour of the cell.
unsigned candidatesOfFour(const RGBQUAD* entries, __m128i rival, __m128i doubledMiddle) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i bytes =
      _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(entries)), _mm_set1_epi32(0x00FFFFFF));
  const __m128 low = _mm_castsi128_ps(leastExcess(_mm_unpacklo_epi8(bytes, zero), rival, doubledMiddle));
  const __m128 high = _mm_castsi128_ps(leastExcess(_mm_unpackhi_epi8(bytes, zero), rival, doubledMiddle));
  const __m128i excess = _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0))),
                                       _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))));
  return ~static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(excess, zero)))) & 15;
}

}  // namespace

int ColorCells::open(const RGBQUAD* palette, unsigned count) {
  std::copy_n(palette, count, palette_);
  std::fill(palette_ + count, palette_ + (count + groupSize - 1) / groupSize * groupSize, palette[count - 1]);
  count_ = count;
  cells_ = OsBlock<uint32_t>::allocateZeroed(matchTableEntries);
  candidates_ = OsBlock<RGBQUAD>::allocate(uint64_t{maxGroups} * groupSize);
  if (!cells_ || !candidates_) return KERR_NO_MEMORY;
  cells_[0] = wholePalette;
  cells_[matchTableEntries - 1] = wholePalette;
  return KSUCCESS;
}

// The entry about nearest to the middle of a cell.
const RGBQUAD& ColorCells::rivalOf(unsigned key) const {
  const auto middle = [](unsigned part) { return part * cellWidth + cellWidth / 2; };
  const __m128i color = distanceOperand(middle(key >> 10), middle(key >> 5 & 31), middle(key & 31));
  int best = INT_MAX;
  unsigned bestGroup = 0;
  for (unsigned i = 0; i < count_; i += groupSize) {
    const int distance = smallestOf(distancesOfFour(palette_ + i, color));
    if (distance < best) {
      best = distance;
      bestGroup = i;
    }
  }
  const unsigned hits = lanesEqual(distancesOfFour(palette_ + bestGroup, color), best);
  return palette_[bestGroup + static_cast<unsigned>(std::countr_zero(hits))];
}

// An entry is a candidate unless the rival is nearer to every colour of the cell.
uint32_t ColorCells::learn(unsigned key) {
  const RGBQUAD& rival = rivalOf(key);
  const __m128i rivalColor = distanceOperand(rival.rgbRed, rival.rgbGreen, rival.rgbBlue);
  const __m128i doubledMiddle = doubledMiddleOf(key);
  uint8_t list[maxGroupsOfCell * groupSize];
  unsigned length = 0;
  for (unsigned i = 0; i < count_; i += groupSize) {
    unsigned hits = candidatesOfFour(palette_ + i, rivalColor, doubledMiddle);
    for (; hits != 0; hits &= hits - 1) {
      const unsigned index = i + static_cast<unsigned>(std::countr_zero(hits));
      if (index >= count_) break;  // a copy of the last entry
      if (length == std::size(list)) return wholePalette;
      list[length++] = static_cast<uint8_t>(index);
    }
  }
  if (length == 1) return list[0] + 1u;

  const unsigned groups = (length + groupSize - 1) / groupSize;
  if (groupsTaken_ + groups > maxGroups) return wholePalette;
  RGBQUAD* candidate = candidates_.get() + size_t{groupsTaken_} * groupSize;
  for (unsigned i = 0; i < groups * groupSize; ++i) {
    const uint8_t index = list[std::min(i, length - 1)];
    candidate[i] = palette_[index];
    candidate[i].rgbReserved = index;
  }
  const uint32_t value = groups << groupCountShift | groupsTaken_;
  groupsTaken_ += groups;
  return value;
}

uint8_t ColorCells::searchCell(unsigned red, unsigned green, unsigned blue) {
  const unsigned key = colorKey(red, green, blue);
  if (cells_[key] == 0) cells_[key] = learn(key);
  const uint32_t value = cells_[key];
  if (value <= 256) return static_cast<uint8_t>(value - 1);
  if (value == wholePalette) return static_cast<uint8_t>(nearestIndex(palette_, count_, red, green, blue));

  const RGBQUAD* candidates = candidates_.get() + size_t{value & ((1u << groupCountShift) - 1)} * groupSize;
  const unsigned groups = value >> groupCountShift;
  const __m128i color = distanceOperand(red, green, blue);
  __m128i distances[maxGroupsOfCell];
  __m128i smallest = _mm_set1_epi32(INT_MAX);
  for (unsigned i = 0; i < groups; ++i) {
    distances[i] = distancesOfFour(candidates + i * groupSize, color);
    smallest = smallerOf(smallest, distances[i]);
  }
  const int distance = smallestOf(smallest);
  uint32_t hits = 0;
  for (unsigned i = 0; i < groups; ++i) hits |= lanesEqual(distances[i], distance) << (i * groupSize);
  if (std::has_single_bit(hits)) return candidates[std::countr_zero(hits)].rgbReserved;
  Tie tie(distance, channelClass(red, green, blue));
  for (; hits != 0; hits &= hits - 1) tie.add(candidates[std::countr_zero(hits)]);
  return tie.winner();
}

}  // namespace zavo
