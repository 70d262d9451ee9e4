// Packing and unpacking by groups of 8 pixels, which fill as many whole bytes as a pixel has bits. A group is handled
// as two halves of 4 pixels, so that every depth fits in 32-bit arithmetic. Pixels before the first whole group and
// after the last one go one by one.
#include "core/packed_pixels.h"

#include <algorithm>
#include <cstring>

namespace zavo {
namespace {

// Most significant byte first.
template <unsigned bytes>
uint32_t loadBytes(const uint8_t* source) {
  uint32_t word = 0;
  for (unsigned i = 0; i < bytes; ++i) word = word << 8 | source[i];
  return word;
}

uint32_t loadWord(const uint8_t* source) {
  uint32_t word;
  memcpy(&word, source, 4);
  return __builtin_bswap32(word);
}

void storeWord(uint8_t* target, uint32_t word) {
  word = __builtin_bswap32(word);
  memcpy(target, &word, 4);
}

template <unsigned bits>
struct Group {
  static constexpr unsigned mask = (1u << bits) - 1;
  static constexpr unsigned halfBits = 4 * bits;
  static constexpr unsigned halfBytes = (halfBits + 7) / 8;

  // The low halfBits of `half`, first pixel highest, to 4 bytes.
  static void unpackHalf(uint8_t* indexes, uint32_t half) {
    const uint32_t spread =
        (half >> 3 * bits & mask) | (half >> 2 * bits & mask) << 8 | (half >> bits & mask) << 16 | (half & mask) << 24;
    memcpy(indexes, &spread, 4);
  }

  static uint32_t packHalf(const uint8_t* indexes) {
    uint32_t spread;
    memcpy(&spread, indexes, 4);
    return (spread & mask) << 3 * bits | (spread >> 8 & mask) << 2 * bits | (spread >> 16 & mask) << bits |
           (spread >> 24 & mask);
  }

  // The halves of a depth that is odd share the middle byte.
  static void unpack(uint8_t* indexes, const uint8_t* packed) {
    unpackHalf(indexes, loadBytes<halfBytes>(packed) >> (8 * halfBytes - halfBits));
    unpackHalf(indexes + 4, loadBytes<halfBytes>(packed + bits - halfBytes));
  }

  static void pack(uint8_t* packed, const uint8_t* indexes) {
    const uint64_t group = uint64_t{packHalf(indexes)} << halfBits | packHalf(indexes + 4);
    for (unsigned i = 0; i < bits; ++i) packed[i] = static_cast<uint8_t>(group >> 8 * (bits - 1 - i));
  }
};

template <unsigned bits>
void unpack(uint8_t* indexes, const uint8_t* packed, unsigned firstPixel, unsigned count) {
  packed += size_t{firstPixel / 8} * bits;
  unsigned phase = firstPixel % 8;
  if (phase != 0) {
    const unsigned head = std::min(8 - phase, count);
    for (unsigned i = 0; i < head; ++i) *indexes++ = static_cast<uint8_t>(packedPixel(packed, phase++, bits));
    count -= head;
    packed += bits;
  }
  for (; count >= 8; count -= 8) {
    Group<bits>::unpack(indexes, packed);
    packed += bits;
    indexes += 8;
  }
  for (unsigned i = 0; i < count; ++i) indexes[i] = static_cast<uint8_t>(packedPixel(packed, i, bits));
}

template <unsigned bits>
void pack(uint8_t* packed, const uint8_t* indexes, unsigned firstPixel, unsigned count) {
  packed += size_t{firstPixel / 8} * bits;
  unsigned phase = firstPixel % 8;
  if (phase != 0) {
    const unsigned head = std::min(8 - phase, count);
    for (unsigned i = 0; i < head; ++i) setPackedPixel(packed, phase++, bits, *indexes++);
    count -= head;
    packed += bits;
  }
  for (; count >= 8; count -= 8) {
    Group<bits>::pack(packed, indexes);
    packed += bits;
    indexes += 8;
  }
  for (unsigned i = 0; i < count; ++i) setPackedPixel(packed, i, bits, indexes[i]);
}

template <>
void unpack<8>(uint8_t* indexes, const uint8_t* packed, unsigned firstPixel, unsigned count) {
  memcpy(indexes, packed + firstPixel, count);
}

template <>
void pack<8>(uint8_t* packed, const uint8_t* indexes, unsigned firstPixel, unsigned count) {
  memcpy(packed + firstPixel, indexes, count);
}

// Where a pixel lies: its first byte, and how many bits its last bit is above the end of a pair of bytes.
struct PixelPlace {
  PixelPlace(unsigned pixel, unsigned bits)
      : byte(size_t{pixel / 8} * bits + pixel % 8 * bits / 8), shift(16 - bits - pixel % 8 * bits % 8) {}
  [[nodiscard]] bool inOneByte() const { return shift >= 8; }

  size_t byte;
  unsigned shift;
};

}  // namespace

UnpackFunction unpackFunction(int bitsPerPixel) {
  static constexpr UnpackFunction functions[] = {unpack<1>, unpack<2>, unpack<3>, unpack<4>,
                                                 unpack<5>, unpack<6>, unpack<7>, unpack<8>};
  return functions[bitsPerPixel - 1];
}

PackFunction packFunction(int bitsPerPixel) {
  static constexpr PackFunction functions[] = {pack<1>, pack<2>, pack<3>, pack<4>, pack<5>, pack<6>, pack<7>, pack<8>};
  return functions[bitsPerPixel - 1];
}

unsigned packedPixel(const uint8_t* packed, unsigned pixel, unsigned bitsPerPixel) {
  const PixelPlace place(pixel, bitsPerPixel);
  unsigned pair = packed[place.byte] * 256u;
  if (!place.inOneByte()) pair |= packed[place.byte + 1];
  return pair >> place.shift & ((1u << bitsPerPixel) - 1);
}

void setPackedPixel(uint8_t* packed, unsigned pixel, unsigned bitsPerPixel, unsigned index) {
  const PixelPlace place(pixel, bitsPerPixel);
  const unsigned mask = ((1u << bitsPerPixel) - 1) << place.shift;
  const unsigned value = index << place.shift & mask;
  uint8_t* bytes = packed + place.byte;
  bytes[0] = static_cast<uint8_t>((bytes[0] & ~(mask >> 8)) | value >> 8);
  if (!place.inOneByte()) bytes[1] = static_cast<uint8_t>((bytes[1] & ~mask) | value);
}

void shiftBitsLeft(uint8_t* packed, unsigned bytes, unsigned shift) {
  if (shift == 0 || bytes == 0) return;
  unsigned at = 0;
  for (; bytes - at > 4; at += 4) {
    storeWord(packed + at, loadWord(packed + at) << shift | packed[at + 4] >> (8 - shift));
  }
  for (; at + 1 < bytes; ++at) {
    packed[at] = static_cast<uint8_t>(packed[at] << shift | packed[at + 1] >> (8 - shift));
  }
  packed[at] = static_cast<uint8_t>(packed[at] << shift);
}

void shiftBitsRight(uint8_t* packed, unsigned bytes, unsigned shift) {
  if (shift == 0 || bytes == 0) return;
  unsigned end = bytes;
  for (; end > 4; end -= 4) {
    uint8_t* word = packed + end - 4;
    storeWord(word, loadWord(word) >> shift | static_cast<uint32_t>(word[-1]) << (32 - shift));
  }
  for (; end > 1; --end) {
    packed[end - 1] = static_cast<uint8_t>(packed[end - 1] >> shift | packed[end - 2] << (8 - shift));
  }
  packed[0] = static_cast<uint8_t>(packed[0] >> shift);
}

}  // namespace zavo
