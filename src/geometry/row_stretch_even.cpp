// Rows shrunk to a half or a quarter and rows enlarged to the double: loops that the compiler turns into vectors, and
// for packed pixels tables of whole bytes.
#include "geometry/row_stretch_even.h"

#include <array>
#include <cstring>

#include "core/module.h"
#include "geometry/packed_fetch.h"

namespace zavo {
namespace {

using Counts = RowStretch::Counts;
using Worker = RowStretch::Worker;

template <typename Pixel, unsigned factor>
void shrinkWords(uint8_t* __restrict destination, const uint8_t* __restrict source, const uint32_t*,
                 const Counts& counts) {
  for (unsigned i = 0; i < counts.pixels; ++i) {
    memcpy(destination + i * sizeof(Pixel), source + i * sizeof(Pixel) * factor, sizeof(Pixel));
  }
}

template <typename Pixel>
void doubleWords(uint8_t* __restrict destination, const uint8_t* __restrict source, const uint32_t*,
                 const Counts& counts) {
  for (unsigned i = 0; i < counts.pixels / 2; ++i) {
    Pixel pixel;
    memcpy(&pixel, source + i * sizeof(Pixel), sizeof(Pixel));
    memcpy(destination + i * 2 * sizeof(Pixel), &pixel, sizeof(Pixel));
    memcpy(destination + (i * 2 + 1) * sizeof(Pixel), &pixel, sizeof(Pixel));
  }
  if (counts.pixels % 2 != 0) {
    const unsigned last = counts.pixels - 1;
    memcpy(destination + last * sizeof(Pixel), source + last / 2 * sizeof(Pixel), sizeof(Pixel));
  }
}

// The pixels of the last byte of a packed row, whose source is named by a rule.
template <unsigned bits, typename SourceOf>
void makeLastByte(uint8_t* destination, const uint8_t* source, unsigned pixels, SourceOf sourceOf) {
  constexpr unsigned perByte = 8 / bits;
  const unsigned first = pixels / perByte * perByte;
  if (first == pixels) return;
  unsigned byte = 0;
  for (unsigned i = first; i < first + perByte; ++i) {
    byte = byte << bits | (i < pixels ? packedAt<bits>(source, sourceOf(i)) : 0);
  }
  destination[first / perByte] = static_cast<uint8_t>(byte);
}

// For every byte its first, third, ... pixel, in the low four bits.
template <unsigned bits>
constexpr std::array<uint8_t, 256> halves = [] {
  std::array<uint8_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned half = 0;
    for (unsigned shift = 8 - bits;; shift -= 2 * bits) {
      half = half << bits | (byte >> shift & ((1u << bits) - 1));
      if (shift < 2 * bits) break;
    }
    table[byte] = static_cast<uint8_t>(half);
  }
  return table;
}();

// For every byte two bytes with each of its pixels twice, the first of them in the low byte.
template <unsigned bits>
constexpr std::array<uint16_t, 256> doubles = [] {
  std::array<uint16_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned twice = 0;
    for (unsigned i = 0; i < 8 / bits; ++i) {
      const unsigned pixel = byte >> (8 - bits - i * bits) & ((1u << bits) - 1);
      twice = twice << 2 * bits | pixel << bits | pixel;
    }
    table[byte] = static_cast<uint16_t>(twice >> 8 | twice << 8);
  }
  return table;
}();

template <unsigned bits>
void halvePacked(uint8_t* destination, const uint8_t* source, const uint32_t*, const Counts& counts) {
  const unsigned bytes = counts.pixels / (8 / bits);
  for (unsigned i = 0; i < bytes; ++i) {
    destination[i] = static_cast<uint8_t>(halves<bits>[source[i * 2]] << 4 | halves<bits>[source[i * 2 + 1]]);
  }
  makeLastByte<bits>(destination, source, counts.pixels, [](unsigned pixel) { return pixel * 2; });
}

template <unsigned bits>
void doublePacked(uint8_t* destination, const uint8_t* source, const uint32_t*, const Counts& counts) {
  const unsigned bytes = counts.pixels / (8 / bits);
  for (unsigned i = 0; i < bytes / 2; ++i) memcpy(destination + i * 2, &doubles<bits>[source[i]], 2);
  if (bytes % 2 != 0) destination[bytes - 1] = static_cast<uint8_t>(doubles<bits>[source[bytes / 2]]);
  makeLastByte<bits>(destination, source, counts.pixels, [](unsigned pixel) { return pixel / 2; });
}

struct EvenWorkers {
  int bitsPerPixel;
  Worker quarter, half, twice;
};

constexpr EvenWorkers evenWorkers[] = {
    {1, nullptr, halvePacked<1>, doublePacked<1>},
    {2, nullptr, halvePacked<2>, doublePacked<2>},
    {4, nullptr, halvePacked<4>, doublePacked<4>},
    {8, shrinkWords<uint8_t, 4>, shrinkWords<uint8_t, 2>, doubleWords<uint8_t>},
    {16, shrinkWords<uint16_t, 4>, shrinkWords<uint16_t, 2>, doubleWords<uint16_t>},
    {24, nullptr, halveTriplesSsse3, doubleTriplesSsse3},
    {32, shrinkWords<uint32_t, 4>, shrinkWords<uint32_t, 2>, doubleWords<uint32_t>},
};

}  // namespace

Worker evenStretchWorker(unsigned destinationWidth, unsigned sourceWidth, int bitsPerPixel) {
  if (bitsPerPixel == 24 && !cpuHasSsse3()) return nullptr;
  for (const EvenWorkers& workers : evenWorkers) {
    if (workers.bitsPerPixel != bitsPerPixel) continue;
    if (sourceWidth == uint64_t{destinationWidth} * 4) return workers.quarter;
    if (sourceWidth == uint64_t{destinationWidth} * 2) return workers.half;
    if (destinationWidth == uint64_t{sourceWidth} * 2) return workers.twice;
  }
  return nullptr;
}

}  // namespace zavo
