// Dither runs: rows of pixels become rows of palette indexes, one after another from the first.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/owners.h"

namespace zavo {

struct DitherRun;

// 1 to 6 error diffusion, 7 and 8 ordered; any other value of DitheringMethod stands for the nearest entry.
[[nodiscard]] constexpr bool isDitheringMethod(int method) {
  return method >= 1 && method <= 8;
}

struct DitherSource {
  int width;
  int bitsPerPixel;        // 1 to 8, 16, 24, 32; 0 for grey levels of 8 bits
  int colorOrder;          // of 16 bits and up
  const RGBQUAD* palette;  // of 1 to 8 bits: 1 << bitsPerPixel entries
  int method;
};

struct DitherPalette {
  int kind;               // color/dither_targets.h
  const RGBQUAD* colors;  // for no fixed kind: `count` entries, 1 to 256
  unsigned count;
  int bitsPerPixel;  // of the destination rows
};

// Opens a run; the palettes are copied. KSUCCESS; KERR_BAD_PARAMETER for a source of another depth or a negative width;
// KERR_NO_MEMORY.
[[nodiscard]] int openDitherRun(DitherRun*& run, const DitherSource& source, const DitherPalette& palette);

// Dithers the next row. The destination row is packed; the bits after its last pixel are kept.
void ditherRow(DitherRun& run, uint8_t* destination, const uint8_t* source);

// Frees the run; null is ignored.
void closeDitherRun(DitherRun* run);

struct DitherRunTraits {
  using Handle = DitherRun*;
  static Handle none() { return nullptr; }
  static void close(Handle run) { closeDitherRun(run); }
};
using OwnedDitherRun = Owner<DitherRunTraits>;

}  // namespace zavo
