// The record of a dither run, and the row functions that work on it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "color/conversion.h"
#include "color/dither_kernels.h"
#include "color/dither_targets.h"
#include "core/packed_pixels.h"

namespace zavo {

struct DitherRun;

// Dithers a row to indexes of a byte each, or for some targets to packed indexes. Pixels are 4 bytes of blue, green,
// red and anything, or in a grey run one byte of grey level.
using DitherRowFunction = void (*)(DitherRun& run, uint8_t* indexes, const uint8_t* pixels);

// Finds the entries of pixels as they are.
using QuantiseFunction = DitherRowFunction;

// What a clamped grey value becomes in a grey run. Values are those before clamping, -255 to 510.
struct GrayTable {
  static constexpr int lowest = -255;
  static constexpr int entries = 766;
  static constexpr int16_t unknown = INT16_MIN;

  struct Step {
    int32_t ahead;  // the error times its weight for the next pixel
    int16_t error;  // or unknown
    uint8_t index;
  };

  Step steps[entries];
};

// One 8 x 8 matrix as offsets to add and to subtract with saturation, in rows of 32 bytes: 8 pixels of 4 bytes, or 32
// of a grey run.
struct OrderedOffsets {
  static constexpr unsigned rowBytes = 32;
  uint8_t raise[8][rowBytes];
  uint8_t lower[8][rowBytes];
};

struct DitherRun {
  unsigned width;
  bool gray;     // source and target are grey: one sample a pixel
  uint32_t row;  // rows dithered by an ordered method
  DitherRowFunction dither;
  QuantiseFunction quantise;  // of the ordered methods and of none
  RowConverter fetch;         // to 4 bytes a pixel, or to grey levels
  PackFunction pack;          // null where the row function packs by itself
  DitherTarget target;
  ErrorRows errors;
  OrderedOffsets offsets;
  GrayTable grayTable;
  int grayAhead;     // weight of the next pixel, for the table
  uint8_t* work;     // the block that holds the rows below and the error rows
  uint8_t* pixels;   // a fetched row
  uint8_t* indexes;  // a row of indexes
  void* sums;        // what the rows above carry to a row, of the method's Sum type
};

// --- Error diffusion, methods 1 to 6
[[nodiscard]] DitherRowFunction colorDiffusion(int method, int kind);
[[nodiscard]] DitherRowFunction grayDiffusion(int method);

// What the rows above carry to each of `samples` samples, undivided.
template <int method, int lanes>
void vectorSums(Sum<method>* sums, const ErrorRows& errors, size_t samples);

// --- Ordered dithering, methods 7 and 8
void setOrderedOffsets(OrderedOffsets& offsets, int method, int levelCode, bool gray);
void ditherOrdered(DitherRun& run, uint8_t* indexes, const uint8_t* pixels);

// Adds a row of offsets to `count` bytes; the two may be the same.
void plainAddOffsets(uint8_t* destination, const uint8_t* source, size_t count, const uint8_t* raise,
                     const uint8_t* lower);
void vectorAddOffsets(uint8_t* destination, const uint8_t* source, size_t count, const uint8_t* raise,
                      const uint8_t* lower);

// --- The nearest entry
[[nodiscard]] QuantiseFunction plainQuantise(int kind);
[[nodiscard]] QuantiseFunction vectorQuantise(int kind);  // null for kinds without even levels
// Of grey runs, by the table; the vector function for fixed palettes.
void plainQuantiseGray(DitherRun& run, uint8_t* indexes, const uint8_t* levels);
void vectorQuantiseGray(DitherRun& run, uint8_t* indexes, const uint8_t* levels);
// Black and white, packed: 1 for levels from 128 on.
void packTopBits(DitherRun& run, uint8_t* packed, const uint8_t* levels);

// Prepares a grey run's table: that of a fixed palette whole, another to be filled as values appear. `ahead` is the
// weight of an error for the next pixel.
void setGrayTable(DitherRun& run, int ahead);

}  // namespace zavo
