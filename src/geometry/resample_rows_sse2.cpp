// Row workers of resampling in vectors: one 3-byte pixel, or 16 bytes of a row, at a time.
#include "geometry/resample_rows_sse2.h"

#include <algorithm>
#include <cstring>
#include <emmintrin.h>

#include "geometry/resample_rows.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

// Division of 16-bit sums by 1 to 257. The quotient by a reciprocal that is too small is short by 1 at most, and the
// remainder tells.
class NarrowDivision {
 public:
  explicit NarrowDivision(unsigned divisor)
      : divisor_(_mm_set1_epi16(static_cast<short>(divisor))),
        largestRemainder_(_mm_set1_epi16(static_cast<short>(divisor - 1))),
        reciprocal_(_mm_set1_epi16(static_cast<short>(std::min(65536 / divisor, 65535u)))) {}

  __m128i operator()(__m128i sums) const {
    const __m128i quotients = _mm_mulhi_epu16(sums, reciprocal_);
    const __m128i remainders = _mm_sub_epi16(sums, _mm_mullo_epi16(quotients, divisor_));
    return _mm_sub_epi16(quotients, _mm_cmpgt_epi16(remainders, largestRemainder_));
  }

 private:
  __m128i divisor_;
  __m128i largestRemainder_;
  __m128i reciprocal_;
};

__m128i load(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

void store(uint8_t* bytes, __m128i vector) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), vector);
}

// Three bytes as the first 16-bit lanes; the fourth lane is that of the byte behind, which is read too.
__m128i loadPixel(const uint8_t* pixel) {
  int word;
  memcpy(&word, pixel, 4);
  return _mm_unpacklo_epi8(_mm_cvtsi32_si128(word), _mm_setzero_si128());
}

__m128i loadLastPixel(const uint8_t* pixel) {
  return _mm_unpacklo_epi8(_mm_cvtsi32_si128(pixel[0] | pixel[1] << 8 | pixel[2] << 16), _mm_setzero_si128());
}

unsigned packPixel(__m128i lanes) {
  return static_cast<unsigned>(_mm_cvtsi128_si32(_mm_packus_epi16(lanes, lanes)));
}

// Writes a byte behind the pixel.
void storePixel(uint8_t* pixel, __m128i lanes) {
  const unsigned word = packPixel(lanes);
  memcpy(pixel, &word, 4);
}

void storeLastPixel(uint8_t* pixel, __m128i lanes) {
  const unsigned word = packPixel(lanes);
  memcpy(pixel, &word, 3);
}

}  // namespace

namespace {

// `uneven`: some destination pixels stand for one source pixel more than `fewer`.
template <bool uneven>
void shrinkTriples(uint8_t* destination, const uint8_t* source, unsigned destinationWidth, unsigned sourceWidth) {
  const unsigned fewer = sourceWidth / destinationWidth;
  const NarrowDivision divisions[2] = {NarrowDivision(fewer), NarrowDivision(fewer + 1)};
  Stepping stepping(sourceWidth, destinationWidth);
  for (unsigned i = 1; i < destinationWidth; ++i, destination += 3) {
    __m128i sums = loadPixel(source);
    for (unsigned k = 1; k < fewer; ++k) sums = _mm_add_epi16(sums, loadPixel(source + k * 3));
    source += fewer * 3;
    if constexpr (uneven) {
      // Whether there is one more cannot be foretold, so it is taken in any case and blanked out.
      const unsigned extra = stepping.advance() - fewer;
      const __m128i mask = _mm_set1_epi16(static_cast<short>(-static_cast<int>(extra)));
      sums = _mm_add_epi16(sums, _mm_and_si128(loadPixel(source), mask));
      source += extra * 3;
      storePixel(destination, divisions[extra](sums));
    } else {
      storePixel(destination, divisions[0](sums));
    }
  }
  // No byte behind the last pixels is touched.
  const unsigned count = uneven ? stepping.advance() : fewer;
  __m128i sums = loadLastPixel(source + (count - 1) * 3);
  for (unsigned k = 0; k + 1 < count; ++k) sums = _mm_add_epi16(sums, loadPixel(source + k * 3));
  storeLastPixel(destination, divisions[count - fewer](sums));
}

}  // namespace

void shrinkTriplesSse2(uint8_t* destination, const uint8_t* source, unsigned destinationWidth, unsigned sourceWidth) {
  const bool uneven = sourceWidth % destinationWidth != 0;
  (uneven ? shrinkTriples<true> : shrinkTriples<false>)(destination, source, destinationWidth, sourceWidth);
}

void enlargeTriplesSse2(uint8_t* destination, const uint8_t* source, unsigned destinationWidth, unsigned sourceWidth) {
  const unsigned fewer = destinationWidth / sourceWidth;
  const NarrowDivision divisions[2] = {NarrowDivision(fewer), NarrowDivision(fewer + 1)};
  const uint8_t* const last = source + size_t{sourceWidth - 1} * 3;
  const auto pixelAt = [last](const uint8_t* pixel) { return pixel < last ? loadPixel(pixel) : loadLastPixel(last); };
  __m128i pixel = pixelAt(source);

  // All but the last pixel are written with a byte behind them.
  unsigned left = destinationWidth - 1;
  const unsigned copies = headStart(fewer, destinationWidth, 2);
  for (unsigned i = 0; i < copies; ++i, --left, destination += 3) storePixel(destination, pixel);

  Stepping stepping(destinationWidth, sourceWidth);
  for (;;) {
    const unsigned span = stepping.advance();
    const NarrowDivision& division = divisions[span - fewer];
    const __m128i next = pixelAt(source + 3);
    const __m128i slope = _mm_sub_epi16(next, pixel);
    // The line's height, times the span.
    __m128i sums = _mm_mullo_epi16(pixel, _mm_set1_epi16(static_cast<short>(span)));
    const unsigned count = std::min(span, left);
    for (unsigned i = 0; i < count; ++i, destination += 3) {
      storePixel(destination, division(sums));
      sums = _mm_add_epi16(sums, slope);
    }
    left -= count;
    if (count < span) {
      storeLastPixel(destination, division(sums));
      return;
    }
    source += 3;
    pixel = next;
  }
}

size_t blendBytesSse2(uint8_t* destination, const uint8_t* from, const uint8_t* to, size_t bytes, unsigned step,
                      unsigned span) {
  const NarrowDivision division(span);
  const __m128i zero = _mm_setzero_si128();
  const __m128i fromWeight = _mm_set1_epi16(static_cast<short>(span - step));
  const __m128i toWeight = _mm_set1_epi16(static_cast<short>(step));
  const auto blend = [&](__m128i a, __m128i b) {
    return division(_mm_add_epi16(_mm_mullo_epi16(a, fromWeight), _mm_mullo_epi16(b, toWeight)));
  };
  size_t i = 0;
  for (; i + 16 <= bytes; i += 16) {
    const __m128i a = load(from + i);
    const __m128i b = load(to + i);
    store(destination + i, _mm_packus_epi16(blend(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero)),
                                            blend(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero))));
  }
  return i;
}

size_t averageSumsSse2(uint8_t* destination, const uint16_t* sums, size_t bytes, unsigned count) {
  const NarrowDivision division(count);
  size_t i = 0;
  for (; i + 16 <= bytes; i += 16) {
    const auto* words = reinterpret_cast<const uint8_t*>(sums + i);
    store(destination + i, _mm_packus_epi16(division(load(words)), division(load(words + 16))));
  }
  return i;
}

}  // namespace zavo
