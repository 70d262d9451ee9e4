// The row functions of colour pixels with SSSE3. Sixteen pixels at a time become four registers of four-byte pixels
// (first, second, third colour byte, alpha) and go out from there in the destination's size. Pixels that do not fill
// a block are left to the plain functions, so nothing beyond a row is read or written.
#include <cstddef>
#include <tmmintrin.h>

#include "color/pixel_rows.h"

namespace zavo {
namespace {

constexpr unsigned blockPixels = 16;

// Sixteen pixels, four to a register.
struct Block {
  __m128i four[4];
};

[[gnu::target("ssse3")]] __m128i loadRegister(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

[[gnu::target("ssse3")]] void storeRegister(uint8_t* bytes, __m128i value) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

struct Gray {
  static constexpr PixelSize size = PixelSize::gray8;
  static constexpr unsigned bytes = 1;
  [[gnu::target("ssse3")]] static Block load(const uint8_t* source) {
    const __m128i grays = loadRegister(source);
    const __m128i spread = _mm_setr_epi8(0, 0, 0, -1, 1, 1, 1, -1, 2, 2, 2, -1, 3, 3, 3, -1);
    return {{_mm_shuffle_epi8(grays, spread), _mm_shuffle_epi8(_mm_srli_si128(grays, 4), spread),
             _mm_shuffle_epi8(_mm_srli_si128(grays, 8), spread), _mm_shuffle_epi8(_mm_srli_si128(grays, 12), spread)}};
  }
  // Brightness of blue-first pixels.
  [[gnu::target("ssse3")]] static __m128i brightness(__m128i pixels) {
    const __m128i weights = _mm_setr_epi8(1, 5, 2, 0, 1, 5, 2, 0, 1, 5, 2, 0, 1, 5, 2, 0);
    const __m128i sums = _mm_madd_epi16(_mm_maddubs_epi16(pixels, weights), _mm_set1_epi16(1));
    return _mm_srli_epi32(_mm_add_epi32(sums, _mm_set1_epi32(4)), 3);
  }
  [[gnu::target("ssse3")]] static void store(uint8_t* destination, const Block& block) {
    const __m128i low = _mm_packs_epi32(brightness(block.four[0]), brightness(block.four[1]));
    const __m128i high = _mm_packs_epi32(brightness(block.four[2]), brightness(block.four[3]));
    storeRegister(destination, _mm_packus_epi16(low, high));
  }
};

struct Bits16 {
  static constexpr PixelSize size = PixelSize::bits16;
  static constexpr unsigned bytes = 2;
  // Channels widened to 8 bits by repeating their top bits; alpha is 0, as no other size takes it over.
  [[gnu::target("ssse3")]] static Block load(const uint8_t* source) {
    Block block;
    const __m128i high = _mm_set1_epi16(0xF8), low = _mm_set1_epi16(7);
    for (int i = 0; i < 2; ++i) {
      const __m128i words = loadRegister(source + 16 * i);
      const __m128i first =
          _mm_or_si128(_mm_and_si128(_mm_slli_epi16(words, 3), high), _mm_and_si128(_mm_srli_epi16(words, 2), low));
      const __m128i second =
          _mm_or_si128(_mm_and_si128(_mm_srli_epi16(words, 2), high), _mm_and_si128(_mm_srli_epi16(words, 7), low));
      const __m128i third =
          _mm_or_si128(_mm_and_si128(_mm_srli_epi16(words, 7), high), _mm_and_si128(_mm_srli_epi16(words, 12), low));
      const __m128i firstAndSecond = _mm_or_si128(first, _mm_slli_epi16(second, 8));
      block.four[2 * i] = _mm_unpacklo_epi16(firstAndSecond, third);
      block.four[2 * i + 1] = _mm_unpackhi_epi16(firstAndSecond, third);
    }
    return block;
  }
  // Words in the low halves, their sign carried into the high ones for the pack that follows.
  [[gnu::target("ssse3")]] static __m128i words(__m128i pixels) {
    const __m128i first = _mm_and_si128(_mm_srli_epi32(pixels, 3), _mm_set1_epi32(0x1F));
    const __m128i second = _mm_and_si128(_mm_srli_epi32(pixels, 6), _mm_set1_epi32(0x3E0));
    const __m128i third = _mm_and_si128(_mm_srli_epi32(pixels, 9), _mm_set1_epi32(0x7C00));
    const __m128i alpha = _mm_slli_epi32(_mm_srai_epi32(pixels, 31), 15);
    return _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, alpha));
  }
  [[gnu::target("ssse3")]] static void store(uint8_t* destination, const Block& block) {
    storeRegister(destination, _mm_packs_epi32(words(block.four[0]), words(block.four[1])));
    storeRegister(destination + 16, _mm_packs_epi32(words(block.four[2]), words(block.four[3])));
  }
};

struct Bits24 {
  static constexpr PixelSize size = PixelSize::bits24;
  static constexpr unsigned bytes = 3;
  [[gnu::target("ssse3")]] static Block load(const uint8_t* source) {
    const __m128i a = loadRegister(source), b = loadRegister(source + 16), c = loadRegister(source + 32);
    const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    return {{_mm_shuffle_epi8(a, spread), _mm_shuffle_epi8(_mm_alignr_epi8(b, a, 12), spread),
             _mm_shuffle_epi8(_mm_alignr_epi8(c, b, 8), spread), _mm_shuffle_epi8(_mm_srli_si128(c, 4), spread)}};
  }
  [[gnu::target("ssse3")]] static void store(uint8_t* destination, const Block& block) {
    const __m128i gather = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m128i a = _mm_shuffle_epi8(block.four[0], gather), b = _mm_shuffle_epi8(block.four[1], gather);
    const __m128i c = _mm_shuffle_epi8(block.four[2], gather), d = _mm_shuffle_epi8(block.four[3], gather);
    storeRegister(destination, _mm_or_si128(a, _mm_slli_si128(b, 12)));
    storeRegister(destination + 16, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
    storeRegister(destination + 32, _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(d, 4)));
  }
};

struct Bits32 {
  static constexpr PixelSize size = PixelSize::bits32;
  static constexpr unsigned bytes = 4;
  [[gnu::target("ssse3")]] static Block load(const uint8_t* source) {
    return {{loadRegister(source), loadRegister(source + 16), loadRegister(source + 32), loadRegister(source + 48)}};
  }
  [[gnu::target("ssse3")]] static void store(uint8_t* destination, const Block& block) {
    for (int i = 0; i < 4; ++i) storeRegister(destination + 16 * i, block.four[i]);
  }
};

[[gnu::target("ssse3")]] void swapEnds(Block& block) {
  const __m128i order = _mm_setr_epi8(2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15);
  for (__m128i& pixels : block.four) pixels = _mm_shuffle_epi8(pixels, order);
}

template <typename Source, typename Destination, bool swap>
[[gnu::target("ssse3")]] void convertBlock(uint8_t* destination, const uint8_t* source) {
  Block block = Source::load(source);
  if constexpr (swap) swapEnds(block);
  Destination::store(destination, block);
}

template <typename Source, typename Destination, bool swap>
[[gnu::target("ssse3")]] void convertRow(uint8_t* destination, const uint8_t* source, unsigned width) {
  constexpr size_t sourceBytes = blockPixels * Source::bytes;
  constexpr size_t destinationBytes = blockPixels * Destination::bytes;
  const size_t blocks = width / blockPixels;
  uint8_t* destinationEnd = destination + blocks * destinationBytes;
  const uint8_t* sourceEnd = source + blocks * sourceBytes;
  const PixelRowFunction plainRow = plainPixelRows.find(Source::size, Destination::size, swap);

  if constexpr (destinationBytes > sourceBytes) {
    plainRow(destinationEnd, sourceEnd, width % blockPixels);
    while (destinationEnd != destination) {
      destinationEnd -= destinationBytes;
      sourceEnd -= sourceBytes;
      convertBlock<Source, Destination, swap>(destinationEnd, sourceEnd);
    }
  } else {
    for (; destination != destinationEnd; destination += destinationBytes, source += sourceBytes) {
      convertBlock<Source, Destination, swap>(destination, source);
    }
    plainRow(destinationEnd, sourceEnd, width % blockPixels);
  }
}

// Exchanging the channels of 16-bit pixels needs no unpacking.
[[gnu::target("ssse3")]] void swapRow16(uint8_t* destination, const uint8_t* source, unsigned width) {
  const __m128i middle = _mm_set1_epi16(static_cast<short>(0x83E0)), low = _mm_set1_epi16(0x1F);
  unsigned x = 0;
  for (; x + 8 <= width; x += 8) {
    const __m128i words = loadRegister(source + 2 * x);
    const __m128i first = _mm_and_si128(_mm_srli_epi16(words, 10), low);
    const __m128i third = _mm_slli_epi16(_mm_and_si128(words, low), 10);
    storeRegister(destination + 2 * x, _mm_or_si128(_mm_and_si128(words, middle), _mm_or_si128(first, third)));
  }
  plainPixelRows.find(PixelSize::bits16, PixelSize::bits16, true)(destination + 2 * x, source + 2 * x, width - x);
}

// Nor does exchanging the ends of 24-bit pixels, whose outer bytes at times lie in the neighbouring register.
[[gnu::target("ssse3")]] void swapRow24(uint8_t* destination, const uint8_t* source, unsigned width) {
  const __m128i ownOfFirst = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, -1);
  const __m128i secondToFirst = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 1);
  const __m128i ownOfSecond = _mm_setr_epi8(0, -1, 4, 3, 2, 7, 6, 5, 10, 9, 8, 13, 12, 11, -1, 15);
  const __m128i firstToSecond = _mm_setr_epi8(-1, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  const __m128i thirdToSecond = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, -1);
  const __m128i ownOfThird = _mm_setr_epi8(-1, 3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10, 15, 14, 13);
  const __m128i secondToThird = _mm_setr_epi8(14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  unsigned x = 0;
  for (; x + blockPixels <= width; x += blockPixels) {
    const __m128i a = loadRegister(source + 3 * x), b = loadRegister(source + 3 * x + 16);
    const __m128i c = loadRegister(source + 3 * x + 32);
    const __m128i second = _mm_or_si128(_mm_shuffle_epi8(a, firstToSecond), _mm_shuffle_epi8(c, thirdToSecond));
    storeRegister(destination + 3 * x,
                  _mm_or_si128(_mm_shuffle_epi8(a, ownOfFirst), _mm_shuffle_epi8(b, secondToFirst)));
    storeRegister(destination + 3 * x + 16, _mm_or_si128(_mm_shuffle_epi8(b, ownOfSecond), second));
    storeRegister(destination + 3 * x + 32,
                  _mm_or_si128(_mm_shuffle_epi8(c, ownOfThird), _mm_shuffle_epi8(b, secondToThird)));
  }
  plainPixelRows.find(PixelSize::bits24, PixelSize::bits24, true)(destination + 3 * x, source + 3 * x, width - x);
}

template <typename Source, typename Destination>
constexpr PixelRowFunction swapped = convertRow<Source, Destination, true>;
template <typename Source, typename Destination>
constexpr PixelRowFunction straight = convertRow<Source, Destination, false>;

}  // namespace

constexpr PixelRowTable ssse3PixelRows = {{
    {{nullptr, nullptr},
     {straight<Gray, Bits16>, straight<Gray, Bits16>},
     {straight<Gray, Bits24>, straight<Gray, Bits24>},
     {straight<Gray, Bits32>, straight<Gray, Bits32>}},
    {{straight<Bits16, Gray>, swapped<Bits16, Gray>},
     {nullptr, swapRow16},
     {straight<Bits16, Bits24>, swapped<Bits16, Bits24>},
     {straight<Bits16, Bits32>, swapped<Bits16, Bits32>}},
    {{straight<Bits24, Gray>, swapped<Bits24, Gray>},
     {straight<Bits24, Bits16>, swapped<Bits24, Bits16>},
     {nullptr, swapRow24},
     {straight<Bits24, Bits32>, swapped<Bits24, Bits32>}},
    {{straight<Bits32, Gray>, swapped<Bits32, Gray>},
     {straight<Bits32, Bits16>, swapped<Bits32, Bits16>},
     {straight<Bits32, Bits24>, swapped<Bits32, Bits24>},
     {nullptr, swapped<Bits32, Bits32>}},
}};

}  // namespace zavo
