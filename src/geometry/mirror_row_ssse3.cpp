// Row mirroring with the byte shuffle: blocks of 16 bytes (24 bits: 15 of them, five pixels) are exchanged from both
// ends, each reversed in a register; what is left in the middle is too short for a pair and goes through memory.
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

// Five pixels are 15 bytes. The sixteenth byte of a block belongs to a neighbouring pixel: at the low end it is
// rewritten by the next block, at the high end it comes before the block and is kept by loading it along.
[[gnu::target("ssse3")]] void mirrorTriples(uint8_t* row, unsigned width) {
  const __m128i lowOrder = _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, 0);
  const __m128i highOrder = _mm_setr_epi8(15, 12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2);
  const __m128i firstByte = _mm_setr_epi8(-1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m128i lastByte = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1);
  const unsigned bytes = width * 3;
  unsigned done = 0;
  while (bytes - 2 * done >= 2 * 16) {
    uint8_t* low = row + done;                // pixels in bytes 0 to 14
    uint8_t* high = row + bytes - done - 16;  // pixels in bytes 1 to 15
    const __m128i lowBlock = load(low);
    const __m128i highBlock = load(high);
    const __m128i toLow = _mm_shuffle_epi8(highBlock, lowOrder);
    const __m128i toHigh = _mm_shuffle_epi8(lowBlock, highOrder);
    store(low, _mm_or_si128(_mm_andnot_si128(lastByte, toLow), _mm_and_si128(lastByte, lowBlock)));
    store(high, _mm_or_si128(_mm_andnot_si128(firstByte, toHigh), _mm_and_si128(firstByte, highBlock)));
    done += 15;
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
