// Ordered dithering: the same offset is added to all channels of a pixel, then each pixel takes the entry of its
// colour.
#include <algorithm>

#include "color/dither_rows.h"

namespace zavo {
namespace {

// Method 7. 232 comes twice and 236 stands where the regular pattern has 240: existing pictures rest on these values.
constexpr uint8_t dispersedMatrix[8][8] = {
    {0, 128, 32, 160, 8, 136, 40, 168},   {192, 64, 224, 96, 200, 72, 232, 104},
    {48, 176, 16, 144, 56, 184, 24, 152}, {236, 112, 208, 80, 244, 120, 216, 88},
    {12, 140, 44, 172, 4, 132, 36, 164},  {204, 76, 232, 108, 196, 68, 228, 100},
    {60, 188, 28, 156, 52, 180, 20, 148}, {248, 124, 220, 92, 240, 116, 212, 84},
};

// Method 8.
constexpr uint8_t clusteredMatrix[8][8] = {
    {112, 40, 72, 104, 144, 176, 208, 136}, {88, 8, 16, 48, 192, 232, 240, 168},
    {56, 24, 0, 80, 160, 224, 248, 200},    {96, 64, 32, 120, 128, 216, 184, 152},
    {148, 180, 212, 140, 116, 44, 76, 108}, {196, 236, 244, 172, 92, 12, 20, 52},
    {164, 228, 252, 204, 60, 28, 4, 84},    {132, 220, 188, 156, 100, 68, 36, 124},
};

template <typename Quantiser>
void quantiseColors(DitherRun& run, uint8_t* indexes, const uint8_t* pixels) {
  const Quantiser quantise(run.target);
  for (unsigned x = 0; x < run.width; ++x) {
    uint32_t color;
    __builtin_memcpy(&color, pixels + size_t{x} * 4, 4);
    indexes[x] = quantise(color);
  }
}

}  // namespace

void setOrderedOffsets(OrderedOffsets& offsets, int method, int levelCode, bool gray) {
  const auto& matrix = method == 7 ? dispersedMatrix : clusteredMatrix;
  const unsigned lanes = gray ? 1 : 4;
  for (unsigned y = 0; y < 8; ++y) {
    for (unsigned i = 0; i < OrderedOffsets::rowBytes; ++i) {
      const int offset = matrix[y][i / lanes % 8] / levelCode - 128 / levelCode;
      offsets.raise[y][i] = static_cast<uint8_t>(std::max(offset, 0));
      offsets.lower[y][i] = static_cast<uint8_t>(std::max(-offset, 0));
    }
  }
}

void ditherOrdered(DitherRun& run, uint8_t* indexes, const uint8_t* pixels) {
  const unsigned matrixRow = run.row++ % 8;
  const size_t bytes = run.gray ? run.width : size_t{run.width} * 4;
  vectorAddOffsets(run.pixels, pixels, bytes, run.offsets.raise[matrixRow], run.offsets.lower[matrixRow]);
  run.quantise(run, indexes, run.pixels);
}

void plainAddOffsets(uint8_t* destination, const uint8_t* source, size_t count, const uint8_t* raise,
                     const uint8_t* lower) {
  for (size_t i = 0; i < count; ++i) {
    const size_t k = i % OrderedOffsets::rowBytes;
    destination[i] = static_cast<uint8_t>(std::clamp(source[i] + raise[k] - lower[k], 0, 255));
  }
}

QuantiseFunction plainQuantise(int kind) {
  return chooseByQuantiser(kind, []<typename Quantiser>() -> QuantiseFunction { return quantiseColors<Quantiser>; });
}

}  // namespace zavo
