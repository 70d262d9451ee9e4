// Depths whose pixels divide a byte reverse bytes and the pixels inside them, then shift the row so that the first
// pixel is again at the first bit. Pixels of whole bytes are exchanged from both ends. The others (3, 5, 6, 7 bits)
// go through groups of eight pixels.
#include "geometry/mirror_row.h"

#include <zavo.h>

#include <array>
#include <utility>

#include "core/module.h"
#include "core/packed_pixels.h"
#include "core/sizes.h"

namespace zavo {
namespace {

// Every byte with its groups of `bits` bits in reverse order.
template <unsigned bits>
constexpr std::array<uint8_t, 256> reversedGroups = [] {
  std::array<uint8_t, 256> table{};
  for (unsigned value = 0; value < 256; ++value) {
    unsigned reversed = 0;
    for (unsigned shift = 0; shift < 8; shift += bits) {
      const unsigned group = value >> shift & ((1u << bits) - 1);
      reversed |= group << (8 - bits - shift);
    }
    table[value] = static_cast<uint8_t>(reversed);
  }
  return table;
}();

template <unsigned bits>
void mirrorDividing(uint8_t* row, unsigned width) {
  const auto bytes = static_cast<unsigned>(packedBytesFor(width, bits));
  if (bytes == 0) return;
  constexpr auto& reversed = reversedGroups<bits>;
  unsigned low = 0;
  unsigned high = bytes - 1;
  for (; low < high; ++low, --high) {
    const uint8_t moved = reversed[row[low]];
    row[low] = reversed[row[high]];
    row[high] = moved;
  }
  if (low == high) row[low] = reversed[row[low]];
  if (const unsigned unused = bytes * 8 - width * bits; unused != 0) shiftBitsLeft(row, bytes, unused);
}

template <unsigned pixelBytes>
void mirrorWhole(uint8_t* row, unsigned width) {
  struct Pixel {
    uint8_t bytes[pixelBytes];
  };
  auto* low = reinterpret_cast<Pixel*>(row);
  auto* high = low + width;
  while (high - low > 1) std::swap(*low++, *--high);
}

// Eight pixels of `bits` bits are `bits` bytes, so groups of eight from both ends never share a byte until they meet.
// The pixels in the middle that no pair of groups covers are exchanged one by one.
template <unsigned bits>
void mirrorStraddling(uint8_t* row, unsigned width) {
  const UnpackFunction unpack = unpackFunction(bits);
  const PackFunction pack = packFunction(bits);
  constexpr unsigned group = 64;
  uint8_t lowPixels[group], highPixels[group];
  unsigned low = 0;
  unsigned high = width;
  while (high - low > 1) {
    const unsigned half = (high - low) / 2;
    const unsigned count = half < group ? half : group;
    unpack(lowPixels, row, low, count);
    unpack(highPixels, row, high - count, count);
    mirrorWhole<1>(lowPixels, count);
    mirrorWhole<1>(highPixels, count);
    pack(row, highPixels, low, count);
    pack(row, lowPixels, high - count, count);
    low += count;
    high -= count;
  }
  const auto bytes = static_cast<unsigned>(packedBytesFor(width, bits));
  if (const unsigned unused = bytes * 8 - width * bits; unused != 0) {
    row[bytes - 1] = static_cast<uint8_t>(row[bytes - 1] >> unused << unused);
  }
}

}  // namespace

MirrorFunction plainMirrorFunction(int bitsPerPixel) {
  switch (bitsPerPixel) {
    case 1:
      return mirrorDividing<1>;
    case 2:
      return mirrorDividing<2>;
    case 3:
      return mirrorStraddling<3>;
    case 4:
      return mirrorDividing<4>;
    case 5:
      return mirrorStraddling<5>;
    case 6:
      return mirrorStraddling<6>;
    case 7:
      return mirrorStraddling<7>;
    case 8:
      return mirrorWhole<1>;
    case 16:
      return mirrorWhole<2>;
    case 24:
      return mirrorWhole<3>;
    default:
      return mirrorWhole<4>;
  }
}

MirrorFunction mirrorFunction(int bitsPerPixel) {
  if (cpuHasSsse3()) {
    if (const MirrorFunction vector = ssse3MirrorFunction(bitsPerPixel)) return vector;
  }
  return plainMirrorFunction(bitsPerPixel);
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_MirrorLine(unsigned char* row, unsigned width, int bitsPerPixel) {
  if (row == nullptr) return KERR_BAD_PARAMETER;
  mirrorFunction(bitsPerPixel)(row, width);
  return KSUCCESS;
}
