// The matrices, and sixteen pixels at a time against a row of one.
#include "color/threshold.h"

#include <array>
#include <cstring>
#include <emmintrin.h>

namespace zavo {
namespace {

// A comparison mask has the first pixel in its lowest bit, a packed byte in its highest.
constexpr auto reversedBits = [] {
  std::array<uint8_t, 256> table{};
  for (unsigned value = 0; value < 256; ++value) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      if ((value >> bit & 1) != 0) table[value] = static_cast<uint8_t>(table[value] | 0x80 >> bit);
    }
  }
  return table;
}();

// As thresholdRow, pixel by pixel.
void thresholdPixels(uint8_t* packed, const uint8_t* levels, unsigned count, const uint8_t thresholds[8]) {
  for (unsigned x = 0; x < count; ++x) {
    const unsigned bit = 0x80u >> (x & 7);
    if ((x & 7) == 0) packed[x / 8] = 0;
    if (levels[x] > thresholds[x & 7]) packed[x / 8] = static_cast<uint8_t>(packed[x / 8] | bit);
  }
}

}  // namespace

const ThresholdMatrix dispersedMatrix = {
    {0, 128, 32, 160, 8, 136, 40, 168},   {192, 64, 224, 96, 200, 72, 232, 104},
    {48, 176, 16, 144, 56, 184, 24, 152}, {236, 112, 208, 80, 244, 120, 216, 88},
    {12, 140, 44, 172, 4, 132, 36, 164},  {204, 76, 232, 108, 196, 68, 228, 100},
    {60, 188, 28, 156, 52, 180, 20, 148}, {248, 124, 220, 92, 240, 116, 212, 84},
};

const ThresholdMatrix clusteredMatrix = {
    {112, 40, 72, 104, 144, 176, 208, 136}, {88, 8, 16, 48, 192, 232, 240, 168},
    {56, 24, 0, 80, 160, 224, 248, 200},    {96, 64, 32, 120, 128, 216, 184, 152},
    {148, 180, 212, 140, 116, 44, 76, 108}, {196, 236, 244, 172, 92, 12, 20, 52},
    {164, 228, 252, 204, 60, 28, 4, 84},    {132, 220, 188, 156, 100, 68, 36, 124},
};

void thresholdRow(uint8_t* packed, const uint8_t* levels, unsigned count, const uint8_t thresholds[8]) {
  const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(thresholds));
  const __m128i limits = _mm_unpacklo_epi64(eight, eight);
  unsigned x = 0;
  for (; x + 16 <= count; x += 16) {
    const __m128i sixteen = _mm_loadu_si128(reinterpret_cast<const __m128i*>(levels + x));
    // What is left of a level above its threshold is not zero.
    const __m128i above = _mm_subs_epu8(sixteen, limits);
    const int below = _mm_movemask_epi8(_mm_cmpeq_epi8(above, _mm_setzero_si128()));
    const auto mask = static_cast<unsigned>(~below);
    packed[x / 8] = reversedBits[mask & 255];
    packed[x / 8 + 1] = reversedBits[mask >> 8 & 255];
  }
  thresholdPixels(packed + x / 8, levels + x, count - x, thresholds);
}

}  // namespace zavo
