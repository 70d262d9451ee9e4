// 24-bit rows shrunk to a half and enlarged to the double with byte shuffles. What does not fill a block is made pixel
// by pixel, so that nothing beyond a row is read or written.
#include <cstring>
#include <tmmintrin.h>

#include "geometry/row_stretch_even.h"

namespace zavo {
namespace {

[[gnu::target("ssse3")]] __m128i load(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

[[gnu::target("ssse3")]] void store(uint8_t* bytes, __m128i value) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

[[gnu::target("ssse3")]] void storeHalf(uint8_t* bytes, __m128i value) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), value);
}

}  // namespace

// Sixteen pixels in three registers become eight.
[[gnu::target("ssse3")]] void halveTriplesSsse3(uint8_t* destination, const uint8_t* source, const uint32_t*,
                                                const RowStretch::Counts& counts) {
  const __m128i firstOfLow = _mm_setr_epi8(0, 1, 2, 6, 7, 8, 12, 13, 14, -1, -1, -1, -1, -1, -1, -1);
  const __m128i secondOfLow = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, 2, 3, 4, 8, 9, 10, 14);
  const __m128i secondOfHigh = _mm_setr_epi8(15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  const __m128i thirdOfHigh = _mm_setr_epi8(-1, 0, 4, 5, 6, 10, 11, 12, -1, -1, -1, -1, -1, -1, -1, -1);
  unsigned pixel = 0;
  // The block's last source pixel need not be there for the last destination pixel.
  for (; pixel + 8 < counts.pixels; pixel += 8, destination += 24, source += 48) {
    const __m128i second = load(source + 16);
    store(destination, _mm_or_si128(_mm_shuffle_epi8(load(source), firstOfLow), _mm_shuffle_epi8(second, secondOfLow)));
    storeHalf(destination + 16,
              _mm_or_si128(_mm_shuffle_epi8(second, secondOfHigh), _mm_shuffle_epi8(load(source + 32), thirdOfHigh)));
  }
  for (; pixel < counts.pixels; ++pixel, destination += 3, source += 6) memcpy(destination, source, 3);
}

// Four pixels of a register become eight.
[[gnu::target("ssse3")]] void doubleTriplesSsse3(uint8_t* destination, const uint8_t* source, const uint32_t*,
                                                 const RowStretch::Counts& counts) {
  const __m128i low = _mm_setr_epi8(0, 1, 2, 0, 1, 2, 3, 4, 5, 3, 4, 5, 6, 7, 8, 6);
  const __m128i high = _mm_setr_epi8(7, 8, 9, 10, 11, 9, 10, 11, -1, -1, -1, -1, -1, -1, -1, -1);
  unsigned pixel = 0;
  // A register reaches into the sixth source pixel.
  for (; pixel + 11 <= counts.pixels; pixel += 8, destination += 24, source += 12) {
    const __m128i pixels = load(source);
    store(destination, _mm_shuffle_epi8(pixels, low));
    storeHalf(destination + 16, _mm_shuffle_epi8(pixels, high));
  }
  for (; pixel < counts.pixels; ++pixel, destination += 3) {
    memcpy(destination, source, 3);
    if (pixel % 2 != 0) source += 3;
  }
}

}  // namespace zavo
