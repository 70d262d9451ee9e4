// Row mirroring with the byte shuffle: blocks of 16 bytes (24 bits: 48) are exchanged from both ends, each reversed in
// registers; what is left in the middle is too short for a pair and goes to the plain function.
#include <tmmintrin.h>

#include "core/packed_pixels.h"
#include "geometry/mirror_row.h"

namespace zavo {
namespace {

// Reverses the pixels of 16 loaded bytes.
struct Bytes {
  static constexpr unsigned step = 16;
  [[gnu::target("ssse3")]] static __m128i reverse(__m128i block) {
    return _mm_shuffle_epi8(block, _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
  }
};

struct Words {
  static constexpr unsigned step = 16;
  [[gnu::target("ssse3")]] static __m128i reverse(__m128i block) {
    return _mm_shuffle_epi8(block, _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1));
  }
};

struct DoubleWords {
  static constexpr unsigned step = 16;
  [[gnu::target("ssse3")]] static __m128i reverse(__m128i block) {
    return _mm_shuffle_epi32(block, _MM_SHUFFLE(0, 1, 2, 3));
  }
};

struct Bits {
  static constexpr unsigned step = 16;
  [[gnu::target("ssse3")]] static __m128i reverse(__m128i block) {
    const __m128i nibbles = _mm_setr_epi8(0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15);
    const __m128i low = _mm_set1_epi8(0x0F);
    const __m128i fromLow = _mm_shuffle_epi8(nibbles, _mm_and_si128(block, low));
    const __m128i fromHigh = _mm_shuffle_epi8(nibbles, _mm_and_si128(_mm_srli_epi16(block, 4), low));
    return Bytes::reverse(_mm_or_si128(_mm_slli_epi16(fromLow, 4), fromHigh));
  }
};

[[gnu::target("ssse3")]] __m128i load(const uint8_t* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
[[gnu::target("ssse3")]] void store(uint8_t* to, __m128i block) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block);
}

// Exchanges reversed blocks from both ends; returns how many bytes at each end are done.
template <typename Unit>
[[gnu::target("ssse3")]] unsigned exchangeBlocks(uint8_t* row, unsigned bytes) {
  unsigned done = 0;
  while (bytes - 2 * done >= 2 * Unit::step) {
    uint8_t* low = row + done;
    uint8_t* high = row + bytes - done - Unit::step;
    const __m128i lowBlock = load(low);
    store(low, Unit::reverse(load(high)));
    store(high, Unit::reverse(lowBlock));
    done += Unit::step;
  }
  return done;
}

template <typename Unit, int bitsPerPixel>
[[gnu::target("ssse3")]] void mirrorUnits(uint8_t* row, unsigned width) {
  constexpr unsigned pixelBytes = bitsPerPixel / 8;
  const unsigned done = exchangeBlocks<Unit>(row, width * pixelBytes);
  plainMirrorFunction(bitsPerPixel)(row + done, width - 2 * (done / pixelBytes));
}

[[gnu::target("ssse3")]] void mirrorBits(uint8_t* row, unsigned width) {
  const unsigned bytes = (width + 7) / 8;
  const unsigned done = exchangeBlocks<Bits>(row, bytes);
  plainMirrorFunction(1)(row + done, 8 * (bytes - 2 * done));
  if (const unsigned unused = bytes * 8 - width; unused != 0) shiftBitsLeft(row, bytes, unused);
}

// Sixteen pixels of 24 bits: the fewest that fill whole registers. Pixels straddle registers, so every reversed
// register is put together from two or three.
struct TripleBlock {
  __m128i first, second, third;
};

[[gnu::target("ssse3")]] TripleBlock loadTriples(const uint8_t* from) {
  return {load(from), load(from + 16), load(from + 32)};
}

[[gnu::target("ssse3")]] void storeReversedTriples(uint8_t* to, const TripleBlock& block) {
  const __m128i thirdToFirst = _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, -1);
  const __m128i secondToFirst = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 14);
  const __m128i thirdToSecond = _mm_setr_epi8(-1, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  const __m128i secondToSecond = _mm_setr_epi8(15, -1, 11, 12, 13, 8, 9, 10, 5, 6, 7, 2, 3, 4, -1, 0);
  const __m128i firstToSecond = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 15, -1);
  const __m128i secondToThird = _mm_setr_epi8(1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  const __m128i firstToThird = _mm_setr_epi8(-1, 12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2);
  store(to, _mm_or_si128(_mm_shuffle_epi8(block.third, thirdToFirst), _mm_shuffle_epi8(block.second, secondToFirst)));
  store(to + 16, _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(block.third, thirdToSecond),
                                           _mm_shuffle_epi8(block.second, secondToSecond)),
                              _mm_shuffle_epi8(block.first, firstToSecond)));
  store(to + 32,
        _mm_or_si128(_mm_shuffle_epi8(block.second, secondToThird), _mm_shuffle_epi8(block.first, firstToThird)));
}

[[gnu::target("ssse3")]] void mirrorTriples(uint8_t* row, unsigned width) {
  constexpr unsigned step = sizeof(TripleBlock);
  const unsigned bytes = width * 3;
  unsigned done = 0;
  while (bytes - 2 * done >= 2 * step) {
    uint8_t* low = row + done;
    uint8_t* high = row + bytes - done - step;
    const TripleBlock lowBlock = loadTriples(low);
    storeReversedTriples(low, loadTriples(high));
    storeReversedTriples(high, lowBlock);
    done += step;
  }
  plainMirrorFunction(24)(row + done, width - 2 * (done / 3));
}

}  // namespace

MirrorFunction ssse3MirrorFunction(int bitsPerPixel) {
  switch (bitsPerPixel) {
    case 1:
      return mirrorBits;
    case 8:
      return mirrorUnits<Bytes, 8>;
    case 16:
      return mirrorUnits<Words, 16>;
    case 24:
      return mirrorTriples;
    case 32:
      return mirrorUnits<DoubleWords, 32>;
    default:
      return nullptr;
  }
}

}  // namespace zavo
