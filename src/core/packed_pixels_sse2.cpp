// Packing and unpacking of 1-bit pixels, 16 at a time.
#include <cstring>
#include <emmintrin.h>

#include "core/packed_pixels.h"

namespace zavo {
namespace {

// What the pixels of a byte count for, the first pixel first.
__m128i bitWeights() {
  return _mm_set1_epi64x(0x0102040810204080);
}

}  // namespace

unsigned packBitGroups(uint8_t* packed, const uint8_t* indexes, unsigned count) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i one = _mm_set1_epi8(1);
  unsigned done = 0;
  for (; done + 16 <= count; done += 16, packed += 2) {
    const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(indexes + done));
    const __m128i clear = _mm_cmpeq_epi8(_mm_and_si128(pixels, one), zero);
    const __m128i bytes = _mm_sad_epu8(_mm_andnot_si128(clear, bitWeights()), zero);
    packed[0] = static_cast<uint8_t>(_mm_cvtsi128_si32(bytes));
    packed[1] = static_cast<uint8_t>(_mm_extract_epi16(bytes, 4));
  }
  return done;
}

unsigned unpackBitGroups(uint8_t* indexes, const uint8_t* packed, unsigned count) {
  const __m128i one = _mm_set1_epi8(1);
  unsigned done = 0;
  for (; done + 16 <= count; done += 16, packed += 2) {
    uint16_t bits;
    memcpy(&bits, packed, 2);
    // Each byte eight times side by side.
    const __m128i pairs = _mm_unpacklo_epi8(_mm_cvtsi32_si128(bits), _mm_cvtsi32_si128(bits));
    const __m128i bytes = _mm_unpacklo_epi32(_mm_shufflelo_epi16(pairs, 0), _mm_shufflelo_epi16(pairs, 0x55));
    const __m128i spread = _mm_shuffle_epi32(bytes, _MM_SHUFFLE(1, 1, 0, 0));
    const __m128i set = _mm_cmpeq_epi8(_mm_and_si128(spread, bitWeights()), bitWeights());
    _mm_storeu_si128(reinterpret_cast<__m128i*>(indexes + done), _mm_and_si128(set, one));
  }
  return done;
}

}  // namespace zavo
