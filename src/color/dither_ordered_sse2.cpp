// The stages of ordered dithering on 16 bytes at a time: the same bytes as the plain functions.
#include <emmintrin.h>

#include "color/dither_rows.h"

namespace zavo {
namespace {

__m128i load(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

void store(uint8_t* bytes, __m128i vector) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), vector);
}

class LevelsVector {
 public:
  explicit LevelsVector(const LevelsQuantiser& q)
      : redShift_(_mm_cvtsi32_si128(q.redShift)),
        greenShift_(_mm_cvtsi32_si128(q.greenShift)),
        blueShift_(_mm_cvtsi32_si128(q.blueShift)),
        redMask_(_mm_set1_epi32(static_cast<int>(q.redMask))),
        greenMask_(_mm_set1_epi32(static_cast<int>(q.greenMask))),
        blueMask_(_mm_set1_epi32(static_cast<int>(q.blueMask))) {}

  // The indexes of 4 pixels, a word each.
  __m128i operator()(const uint8_t* pixels) const {
    const __m128i colors = load(pixels);
    const __m128i red = _mm_and_si128(_mm_srl_epi32(colors, redShift_), redMask_);
    const __m128i green = _mm_and_si128(_mm_srl_epi32(colors, greenShift_), greenMask_);
    const __m128i blue = _mm_and_si128(_mm_srl_epi32(colors, blueShift_), blueMask_);
    return _mm_or_si128(_mm_or_si128(red, green), blue);
  }

 private:
  __m128i redShift_, greenShift_, blueShift_, redMask_, greenMask_, blueMask_;
};

void quantiseLevels(DitherRun& run, uint8_t* indexes, const uint8_t* pixels) {
  const LevelsQuantiser quantise(run.target);
  const LevelsVector quantiseFour(quantise);
  unsigned x = 0;
  for (; x + 16 <= run.width; x += 16, pixels += 64) {
    const __m128i low = _mm_packs_epi32(quantiseFour(pixels), quantiseFour(pixels + 16));
    const __m128i high = _mm_packs_epi32(quantiseFour(pixels + 32), quantiseFour(pixels + 48));
    store(indexes + x, _mm_packus_epi16(low, high));
  }
  for (; x < run.width; ++x, pixels += 4) {
    uint32_t color;
    __builtin_memcpy(&color, pixels, 4);
    indexes[x] = quantise(color);
  }
}

}  // namespace

void vectorAddOffsets(uint8_t* destination, const uint8_t* source, size_t count, const uint8_t* raise,
                      const uint8_t* lower) {
  const __m128i raises[] = {load(raise), load(raise + 16)};
  const __m128i lowers[] = {load(lower), load(lower + 16)};
  size_t i = 0;
  for (; i + 32 <= count; i += 32) {
    for (size_t half = 0; half < 2; ++half) {
      const __m128i raised = _mm_adds_epu8(load(source + i + 16 * half), raises[half]);
      store(destination + i + 16 * half, _mm_subs_epu8(raised, lowers[half]));
    }
  }
  plainAddOffsets(destination + i, source + i, count - i, raise, lower);
}

void vectorQuantiseGray(DitherRun& run, uint8_t* indexes, const uint8_t* levels) {
  const int bits = run.target.kind == fixedKind(1) ? 1 : 2;
  const __m128i shift = _mm_cvtsi32_si128(8 - bits);
  const __m128i mask = _mm_set1_epi8(static_cast<char>((1 << bits) - 1));
  unsigned x = 0;
  for (; x + 16 <= run.width; x += 16) {
    store(indexes + x, _mm_and_si128(_mm_srl_epi16(load(levels + x), shift), mask));
  }
  for (; x < run.width; ++x) indexes[x] = static_cast<uint8_t>(levels[x] >> (8 - bits));
}

void packTopBits(DitherRun& run, uint8_t* packed, const uint8_t* levels) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i weights = _mm_set1_epi64x(0x0102040810204080);
  unsigned x = 0;
  for (; x + 16 <= run.width; x += 16) {
    const __m128i set = _mm_cmplt_epi8(load(levels + x), zero);
    const __m128i bytes = _mm_sad_epu8(_mm_and_si128(set, weights), zero);
    packed[x / 8] = static_cast<uint8_t>(_mm_cvtsi128_si32(bytes));
    packed[x / 8 + 1] = static_cast<uint8_t>(_mm_extract_epi16(bytes, 4));
  }
  for (; x < run.width; ++x) setPackedPixel(packed, x, 1, levels[x] >> 7);
}

QuantiseFunction vectorQuantise(int kind) {
  return chooseByQuantiser(kind, []<typename Quantiser>() -> QuantiseFunction {
    return std::is_same_v<Quantiser, LevelsQuantiser> ? quantiseLevels : nullptr;
  });
}

}  // namespace zavo
