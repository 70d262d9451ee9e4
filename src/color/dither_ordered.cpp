// Ordered dithering: the same offset is added to all channels of a pixel, then each pixel takes the entry of its
// colour.
#include <algorithm>

#include "color/dither_rows.h"
#include "color/threshold.h"

namespace zavo {
namespace {

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
