// Squared colour distances, four palette entries at a time, and the winner among equal ones.
#pragma once

#include <zavo.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <emmintrin.h>

namespace zavo {

// Order of a colour's channels as a number; it decides between equally near palette entries.
[[nodiscard]] inline unsigned channelClass(unsigned red, unsigned green, unsigned blue) {
  unsigned result = blue > red ? 4 : 0;
  if (green < std::min(red, blue)) result |= 2;
  if (green > std::max(red, blue)) result |= 1;
  return result;
}

[[nodiscard]] inline unsigned channelClass(const RGBQUAD& entry) {
  return channelClass(entry.rgbRed, entry.rgbGreen, entry.rgbBlue);
}

// Who wins among equally near entries, which may come in any order and have their index as reserved byte: of exact
// matches the first, else the last one whose channels stand in the colour's order, else the first. That is how a walk
// through the palette ends.
class Tie {
 public:
  Tie(int distance, unsigned wantedClass) : exact_(distance == 0), wantedClass_(wantedClass) {}

  void add(const RGBQUAD& entry) {
    const int index = entry.rgbReserved;
    first_ = std::min(first_, index);
    if (channelClass(entry) == wantedClass_) lastOfClass_ = std::max(lastOfClass_, index);
  }
  [[nodiscard]] uint8_t winner() const {
    return static_cast<uint8_t>(exact_ || lastOfClass_ < 0 ? first_ : lastOfClass_);
  }

 private:
  bool exact_;
  unsigned wantedClass_;
  int first_ = INT_MAX;
  int lastOfClass_ = -1;
};

// A colour as distancesOfFour wants it: blue, green, red, 0, twice.
[[nodiscard]] inline __m128i distanceOperand(unsigned red, unsigned green, unsigned blue) {
  const auto r = static_cast<short>(red), g = static_cast<short>(green), b = static_cast<short>(blue);
  return _mm_setr_epi16(b, g, r, 0, b, g, r, 0);
}

// Squared distances of four entries from a colour; reserved bytes do not count.
[[nodiscard]] inline __m128i distancesOfFour(const RGBQUAD* entries, __m128i color) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i colorBytes = _mm_set1_epi32(0x00FFFFFF);
  const __m128i bytes = _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(entries)), colorBytes);
  const __m128i low = _mm_sub_epi16(_mm_unpacklo_epi8(bytes, zero), color);
  const __m128i high = _mm_sub_epi16(_mm_unpackhi_epi8(bytes, zero), color);
  const __m128 lowSums = _mm_castsi128_ps(_mm_madd_epi16(low, low));  // blue + green, red, blue + green, red
  const __m128 highSums = _mm_castsi128_ps(_mm_madd_epi16(high, high));
  return _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(lowSums, highSums, _MM_SHUFFLE(2, 0, 2, 0))),
                       _mm_castps_si128(_mm_shuffle_ps(lowSums, highSums, _MM_SHUFFLE(3, 1, 3, 1))));
}

[[nodiscard]] inline __m128i smallerOf(__m128i a, __m128i b) {
  const __m128i aIsSmaller = _mm_cmplt_epi32(a, b);
  return _mm_or_si128(_mm_and_si128(aIsSmaller, a), _mm_andnot_si128(aIsSmaller, b));
}

// The smallest of four values.
[[nodiscard]] inline int smallestOf(__m128i values) {
  values = smallerOf(values, _mm_shuffle_epi32(values, _MM_SHUFFLE(1, 0, 3, 2)));
  values = smallerOf(values, _mm_shuffle_epi32(values, _MM_SHUFFLE(2, 3, 0, 1)));
  return _mm_cvtsi128_si32(values);
}

// One bit for each of four values that equals `value`, the first lowest.
[[nodiscard]] inline unsigned lanesEqual(__m128i values, int value) {
  return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(values, _mm_set1_epi32(value)))));
}

}  // namespace zavo
