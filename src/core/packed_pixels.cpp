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

template <unsigned bytes>
void storeBytes(uint8_t* target, uint32_t word) {
  for (unsigned i = 0; i < bytes; ++i) target[i] = static_cast<uint8_t>(word >> 8 * (bytes - 1 - i));
}

template <unsigned bits>
struct Group {
  static constexpr uint32_t pixelMask = (1u << bits) - 1;
  static constexpr uint32_t pairMask = (1u << 2 * bits) - 1;
  static constexpr unsigned halfBits = 4 * bits;

  // 4 pixels, the first highest below bits that do not count, to a byte each. Taken apart into pairs, then into pixels.
  static void unpackHalf(uint8_t* indexes, uint32_t half) {
    constexpr uint32_t lanes = pixelMask | pixelMask << 16;
    const uint32_t pairs = (half >> 2 * bits & pairMask) | (half & pairMask) << 16;
    const uint32_t spread = (pairs >> bits & lanes) | (pairs & lanes) << 8;
    memcpy(indexes, &spread, 4);
  }

  static uint32_t packHalf(const uint8_t* indexes) {
    constexpr uint32_t lanes = pixelMask | pixelMask << 16;
    uint32_t spread;
    memcpy(&spread, indexes, 4);
    const uint32_t pairs = (spread & lanes) << bits | (spread >> 8 & lanes);
    return (pairs & 0xFFFF) << 2 * bits | pairs >> 16;
  }

  // 4 bits take the form that the compiler turns into vector code.
  static void unpack(uint8_t* indexes, const uint8_t* packed) {
    if constexpr (bits == 4) {
      unpackHalf(indexes, loadBytes<2>(packed));
      unpackHalf(indexes + 4, loadBytes<2>(packed + 2));
    } else if constexpr (bits < 4) {
      const uint32_t group = loadBytes<bits>(packed);
      unpackHalf(indexes, group >> halfBits);
      unpackHalf(indexes + 4, group);
    } else {
      const uint32_t group = loadWord(packed);
      unpackHalf(indexes, group >> (32 - halfBits));
      unpackHalf(indexes + 4, group << 8 * (bits - 4) | loadBytes<bits - 4>(packed + 4));
    }
  }

  static void pack(uint8_t* packed, const uint8_t* indexes) {
    const uint32_t first = packHalf(indexes);
    const uint32_t second = packHalf(indexes + 4);
    if constexpr (bits == 4) {
      storeBytes<2>(packed, first);
      storeBytes<2>(packed + 2, second);
    } else if constexpr (bits < 4) {
      storeBytes<bits>(packed, first << halfBits | second);
    } else {
      storeWord(packed, first << (32 - halfBits) | second >> 8 * (bits - 4));
      storeBytes<bits - 4>(packed + 4, second);
    }
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
  if constexpr (bits == 1) {
    const unsigned done = unpackBitGroups(indexes, packed, count);
    indexes += done;
    packed += done / 8;
    count -= done;
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
  if constexpr (bits == 1) {
    const unsigned done = packBitGroups(packed, indexes, count);
    indexes += done;
    packed += done / 8;
    count -= done;
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
  std::copy_n(packed + firstPixel, count, indexes);
}

template <>
void pack<8>(uint8_t* packed, const uint8_t* indexes, unsigned firstPixel, unsigned count) {
  std::copy_n(indexes, count, packed + firstPixel);
}

// Where a pixel lies: its first byte, and how many bits its last bit is above the end of a pair of bytes.
struct PixelPlace {
  PixelPlace(unsigned pixel, unsigned bits)
      : byte(size_t{pixel / 8} * bits + pixel % 8 * bits / 8), shift(16 - bits - pixel % 8 * bits % 8) {}
  [[nodiscard]] bool inOneByte() const { return shift >= 8; }

  size_t byte;
  unsigned shift;
};

// Replaces the bits of `mask` by those of `value`.
void mergeByte(uint8_t& byte, unsigned value, unsigned mask) {
  byte = static_cast<uint8_t>((byte & ~mask) | (value & mask));
}

// The bits of a byte from `start` on.
unsigned bitsFrom(unsigned start) {
  return 0xFFu >> start;
}
// The bits of a byte before `end`.
unsigned bitsBefore(unsigned end) {
  return 0xFF00u >> end & 0xFF;
}

// Up to 8 bits from bit `start`, 0 to 7, on, moved to the top of a byte; no byte without any of them is read.
unsigned topBits(const uint8_t* source, unsigned start, unsigned count) {
  unsigned pair = source[0] * 256u;
  if (start + count > 8) pair |= source[1];
  return pair << start >> 8 & 0xFF;
}

// Both places are at bit `start` of their bytes.
void copyAlignedBits(uint8_t* target, const uint8_t* source, unsigned start, uint64_t count) {
  const uint64_t end = start + count;
  const auto wholeEnd = static_cast<size_t>(end / 8);
  const unsigned tailMask = bitsBefore(end % 8);
  size_t at = 0;
  if (start != 0) {
    mergeByte(*target, *source, bitsFrom(start) & (wholeEnd == 0 ? tailMask : 0xFF));
    if (wholeEnd == 0) return;
    at = 1;
  }
  memcpy(target + at, source + at, wholeEnd - at);
  if (tailMask != 0) mergeByte(target[wholeEnd], source[wholeEnd], tailMask);
}

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

void copyBits(uint8_t* target, uint64_t targetBit, const uint8_t* source, uint64_t sourceBit, uint64_t count) {
  if (count == 0) return;
  target += targetBit / 8;
  source += sourceBit / 8;
  const unsigned to = targetBit % 8;
  unsigned from = sourceBit % 8;
  if (to == from) {
    copyAlignedBits(target, source, from, count);
    return;
  }
  if (to != 0) {
    const auto head = static_cast<unsigned>(std::min<uint64_t>(8 - to, count));
    mergeByte(*target++, topBits(source, from, head) >> to, bitsFrom(to) & bitsBefore(to + head));
    source += (from + head) / 8;
    from = (from + head) % 8;
    count -= head;
  }
  // The places differ, so that a whole target byte always takes bits of two source bytes.
  for (; count >= 32; count -= 32, target += 4, source += 4) {
    storeWord(target, loadWord(source) << from | source[4] >> (8 - from));
  }
  for (; count >= 8; count -= 8) *target++ = static_cast<uint8_t>(topBits(source++, from, 8));
  if (count > 0) {
    const auto tail = static_cast<unsigned>(count);
    mergeByte(*target, topBits(source, from, tail), bitsBefore(tail));
  }
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

}  // namespace zavo
