// The row function of turned screens with SSSE3, sixteen pixels at a time: their cells as numbers 0 to 63, the
// thresholds of these from four registers that hold the whole screen, the comparison. What does not fill sixteen is
// left to the plain function.
#include <tmmintrin.h>

#include "geometry/sine_table.h"
#include "imgproc/turned_screen.h"

namespace zavo {
namespace {

static_assert(sineScale == 1 << 14, "the shifts below");

constexpr unsigned blockPixels = 16;

[[gnu::target("ssse3")]] __m128i loadRegister(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

// start, start + step, start + 2 * step, start + 3 * step.
[[gnu::target("ssse3")]] __m128i series(uint32_t start, uint32_t step) {
  return _mm_setr_epi32(static_cast<int>(start), static_cast<int>(start + step), static_cast<int>(start + 2 * step),
                        static_cast<int>(start + 3 * step));
}

[[gnu::target("ssse3")]] __m128i repeated(uint32_t value) {
  return _mm_set1_epi32(static_cast<int>(value));
}

// 8 * row + column of four cells.
[[gnu::target("ssse3")]] __m128i cells(__m128i columns, __m128i rows) {
  return _mm_or_si128(_mm_and_si128(_mm_srli_epi32(rows, 11), _mm_set1_epi32(0x38)),
                      _mm_and_si128(_mm_srli_epi32(columns, 14), _mm_set1_epi32(7)));
}

}  // namespace

[[gnu::target("ssse3")]] void turnedRowSsse3(uint8_t* packed, const uint8_t* levels, unsigned width,
                                             const ThresholdMatrix& matrix, ScreenPlace place, ScreenPlace step) {
  const __m128i quarters[4] = {loadRegister(matrix[0]), loadRegister(matrix[2]), loadRegister(matrix[4]),
                               loadRegister(matrix[6])};
  const __m128i columnStep = repeated(4 * step.column), rowStep = repeated(4 * step.row);
  // The first pixel's bit is the highest of its byte.
  const __m128i backwards = _mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8);
  __m128i columns = series(place.column, step.column), rows = series(place.row, step.row);

  const unsigned blocks = width / blockPixels;
  for (unsigned block = 0; block < blocks; ++block, levels += blockPixels, packed += 2) {
    __m128i four[4];
    for (__m128i& numbers : four) {
      numbers = cells(columns, rows);
      columns = _mm_add_epi32(columns, columnStep);
      rows = _mm_add_epi32(rows, rowStep);
    }
    const __m128i numbers = _mm_packus_epi16(_mm_packs_epi32(four[0], four[1]), _mm_packs_epi32(four[2], four[3]));
    const __m128i quarterOf = _mm_and_si128(numbers, _mm_set1_epi8(0x30));
    __m128i thresholds = _mm_setzero_si128();
    for (int k = 0; k < 4; ++k) {
      const __m128i here = _mm_cmpeq_epi8(quarterOf, _mm_set1_epi8(static_cast<char>(16 * k)));
      thresholds = _mm_or_si128(thresholds, _mm_and_si128(here, _mm_shuffle_epi8(quarters[k], numbers)));
    }
    // What is left of a level above its threshold is not zero.
    const __m128i above = _mm_subs_epu8(loadRegister(levels), thresholds);
    const __m128i notAbove = _mm_cmpeq_epi8(_mm_shuffle_epi8(above, backwards), _mm_setzero_si128());
    const int black = _mm_movemask_epi8(notAbove);
    packed[0] = static_cast<uint8_t>(~black);
    packed[1] = static_cast<uint8_t>(~black >> 8);
  }
  const unsigned done = blocks * blockPixels;
  place.column += done * step.column;
  place.row += done * step.row;
  turnedRowPlain(packed, levels, width - done, matrix, place, step);
}

}  // namespace zavo
