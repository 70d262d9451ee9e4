// Positions step exactly: no error builds up along a row, and rows meet without seams. Range checks are done once a
// row, so that the loops over pixels ask nothing.
#include "geometry/rotate_rows.h"

#include <algorithm>
#include <cstring>

#include "core/division.h"
#include "core/packed_pixels.h"

namespace zavo {
namespace {

// Narrows a range to the steps at which 0 <= start + k * step < end.
void narrow(int64_t& first, int64_t& last, int64_t start, int64_t step, int64_t end) {
  if (step == 0) {
    if (start < 0 || start >= end) last = first;
  } else if (step > 0) {
    first = std::max(first, dividedUp(-start, step));
    last = std::min(last, dividedUp(end - start, step));
  } else {
    first = std::max(first, dividedDown(end - start, step) + 1);
    last = std::min(last, dividedDown(-start, step) + 1);
  }
}

const uint8_t* rowAt(const RotationSource& source, int y) {
  return source.rows + y * source.stride;
}

template <int bits>
void sampleNearest(uint8_t* pixels, const RotationSource& source, const RotationWalk& walk, int count) {
  int64_t x = walk.startX;
  int64_t y = walk.startY;
  for (; count > 0; --count, x += walk.stepX, y += walk.stepY) {
    const auto column = static_cast<unsigned>(x >> positionBits);
    const uint8_t* row = rowAt(source, static_cast<int>(y >> positionBits));
    if constexpr (bits <= 8) {
      *pixels++ = static_cast<uint8_t>(packedPixel(row, column, bits));
    } else {
      constexpr unsigned pixelBytes = bits / 8;
      memcpy(pixels, row + column * pixelBytes, pixelBytes);
      pixels += pixelBytes;
    }
  }
}

// The four pixels around a position and how near it is to each, in 256ths.
struct Neighbourhood {
  int x0, x1, y0, y1;
  int weightX, weightY;  // of x1 and y1
};

// Pixel centres lie half a pixel inside; at the border the outer neighbour is the border pixel itself.
Neighbourhood around(const RotationSource& source, int64_t x, int64_t y) {
  const int64_t left = x - positionScale / 2;
  const int64_t top = y - positionScale / 2;
  const int x0 = static_cast<int>(left >> positionBits);
  const int y0 = static_cast<int>(top >> positionBits);
  return {.x0 = std::max(x0, 0),
          .x1 = std::min(x0 + 1, source.width - 1),
          .y0 = std::max(y0, 0),
          .y1 = std::min(y0 + 1, source.height - 1),
          .weightX = static_cast<int>(left >> (positionBits - 8) & 255),
          .weightY = static_cast<int>(top >> (positionBits - 8) & 255)};
}

constexpr unsigned blend(int p00, int p10, int p01, int p11, const Neighbourhood& hood) {
  const int upper = p00 * 256 + (p10 - p00) * hood.weightX;
  const int lower = p01 * 256 + (p11 - p01) * hood.weightX;
  return static_cast<unsigned>(upper * 256 + (lower - upper) * hood.weightY + 32768) >> 16;
}

template <unsigned pixelBytes>
void sampleBytesBilinear(uint8_t* pixels, const RotationSource& source, const RotationWalk& walk, int count) {
  int64_t x = walk.startX;
  int64_t y = walk.startY;
  for (; count > 0; --count, x += walk.stepX, y += walk.stepY) {
    const Neighbourhood hood = around(source, x, y);
    const uint8_t* upper = rowAt(source, hood.y0);
    const uint8_t* lower = rowAt(source, hood.y1);
    const size_t left = static_cast<size_t>(hood.x0) * pixelBytes;
    const size_t right = static_cast<size_t>(hood.x1) * pixelBytes;
    for (size_t channel = 0; channel < pixelBytes; ++channel) {
      *pixels++ = static_cast<uint8_t>(
          blend(upper[left + channel], upper[right + channel], lower[left + channel], lower[right + channel], hood));
    }
  }
}

unsigned wordAt(const uint8_t* row, int column) {
  uint16_t word;
  memcpy(&word, row + static_cast<size_t>(column) * 2, 2);
  return word;
}

void sampleWordsBilinear(uint8_t* pixels, const RotationSource& source, const RotationWalk& walk, int count) {
  int64_t x = walk.startX;
  int64_t y = walk.startY;
  for (; count > 0; --count, x += walk.stepX, y += walk.stepY, pixels += 2) {
    const Neighbourhood hood = around(source, x, y);
    const uint8_t* upper = rowAt(source, hood.y0);
    const uint8_t* lower = rowAt(source, hood.y1);
    const unsigned p00 = wordAt(upper, hood.x0), p10 = wordAt(upper, hood.x1);
    const unsigned p01 = wordAt(lower, hood.x0), p11 = wordAt(lower, hood.x1);
    unsigned word =
        wordAt(rowAt(source, static_cast<int>(y >> positionBits)), static_cast<int>(x >> positionBits)) & 0x8000;
    for (unsigned shift = 0; shift < 15; shift += 5) {
      const auto channel = [shift](unsigned pixel) { return static_cast<int>(pixel >> shift & 31); };
      word |= blend(channel(p00), channel(p10), channel(p01), channel(p11), hood) << shift;
    }
    const auto stored = static_cast<uint16_t>(word);
    memcpy(pixels, &stored, 2);
  }
}

}  // namespace

StepRange stepsInside(const RotationWalk& walk, int count, int width, int height) {
  int64_t first = 0;
  int64_t last = count;
  narrow(first, last, walk.startX, walk.stepX, width * positionScale);
  narrow(first, last, walk.startY, walk.stepY, height * positionScale);
  first = std::clamp<int64_t>(first, 0, count);
  return {static_cast<int>(first), static_cast<int>(std::clamp(last, first, int64_t{count}))};
}

SampleFunction nearestSampling(int bitsPerPixel) {
  static constexpr SampleFunction packed[] = {sampleNearest<1>, sampleNearest<2>, sampleNearest<3>, sampleNearest<4>,
                                              sampleNearest<5>, sampleNearest<6>, sampleNearest<7>, sampleNearest<8>};
  switch (bitsPerPixel) {
    case 16:
      return sampleNearest<16>;
    case 24:
      return sampleNearest<24>;
    case 32:
      return sampleNearest<32>;
    default:
      return packed[bitsPerPixel - 1];
  }
}

SampleFunction bilinearSampling(int bitsPerPixel) {
  switch (bitsPerPixel) {
    case 16:
      return sampleWordsBilinear;
    case 24:
      return sampleBytesBilinear<3>;
    case 32:
      return sampleBytesBilinear<4>;
    default:
      return nullptr;
  }
}

void sampleGrayBilinear(uint8_t* indexes, const RotationSource& source, int bitsPerPixel, const GrayLevels& gray,
                        const RotationWalk& walk, int count) {
  const auto bits = static_cast<unsigned>(bitsPerPixel);
  int64_t x = walk.startX;
  int64_t y = walk.startY;
  for (; count > 0; --count, x += walk.stepX, y += walk.stepY) {
    const Neighbourhood hood = around(source, x, y);
    const auto level = [&](const uint8_t* row, int column) {
      return int{gray.levels[packedPixel(row, static_cast<unsigned>(column), bits)]};
    };
    const uint8_t* upper = rowAt(source, hood.y0);
    const uint8_t* lower = rowAt(source, hood.y1);
    *indexes++ = gray.indexes[blend(level(upper, hood.x0), level(upper, hood.x1), level(lower, hood.x0),
                                    level(lower, hood.x1), hood)];
  }
}

}  // namespace zavo
