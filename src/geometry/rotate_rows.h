// One row of a turned image, sampled from the source by exact integer stepping.
#pragma once

#include <zavo.h>

#include <cstddef>
#include <cstdint>

namespace zavo {

// What sampling needs to know of the source.
struct RotationSource {
  const uint8_t* rows;  // first stored row
  ptrdiff_t stride;
  int width;
  int height;
};

// A straight walk through the source: the position of step k is start + k * step, on both axes, in units of
// 1 / positionScale pixels. Positions name points of the plane in which pixel i covers i to i + 1.
struct RotationWalk {
  int64_t startX, startY;
  int stepX, stepY;
};
constexpr int positionBits = 15;
constexpr int64_t positionScale = int64_t{1} << positionBits;

// The steps of a walk of `count` steps that lie inside a source of `width` x `height` pixels: first to last - 1, which
// is one run, because the source is convex.
struct StepRange {
  int first;
  int last;
};
[[nodiscard]] StepRange stepsInside(const RotationWalk& walk, int count, int width, int height);

// Samples `count` pixels of a walk whose steps all lie inside the source. Pixels of 16 bits and up are written as they
// are stored, packed ones as an index a byte.
using SampleFunction = void (*)(uint8_t* pixels, const RotationSource& source, const RotationWalk& walk, int count);

// The nearest pixel.
[[nodiscard]] SampleFunction nearestSampling(int bitsPerPixel);

// Between the four nearest pixels, for 16, 24 and 32 bits; null otherwise. The alpha bit of 16 bits is the nearest's.
[[nodiscard]] SampleFunction bilinearSampling(int bitsPerPixel);

// Between the four nearest pixels of an image with a grey palette: `levels` gives the grey of every index, `indexes`
// the index for every grey.
struct GrayLevels {
  uint8_t levels[256];
  uint8_t indexes[256];
};
void sampleGrayBilinear(uint8_t* indexes, const RotationSource& source, int bitsPerPixel, const GrayLevels& gray,
                        const RotationWalk& walk, int count);

}  // namespace zavo
