// Combining pieces of two bitmaps' rows: planned once, run for every piece.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/conversion.h"
#include "imgproc/combine_operators.h"

namespace zavo {

// Whether a bitmap's pixels are made of levels, which the arithmetic operators need: grey of 8 bits, or colours of 16
// bits and up.
[[nodiscard]] bool hasLevels(const BitmapHandle& bitmap);

class RowCombiner {
 public:
  // KSUCCESS or KERR_BAD_PARAMETER. The destination of an arithmetic operation must have levels.
  [[nodiscard]] int prepare(const BitmapHandle& destination, const BitmapHandle& source,
                            const CombineOperation& operation);

  // Combines `count` pixels from column `first` of the destination row and `sourceFirst` of the source row on.
  void run(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst, unsigned count) {
    (this->*run_)(destinationRow, first, sourceRow, sourceFirst, count);
  }

 private:
  using RunFunction = void (RowCombiner::*)(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow,
                                            unsigned sourceFirst, unsigned count);

  void copyBitRange(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                    unsigned count);
  void combineBitRange(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                       unsigned count);
  void copyPixels(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                  unsigned count);
  void combineStored(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                     unsigned count);
  void combine(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst, unsigned count);

  uint8_t* load(uint8_t* pixels, RowConverter& converter, const uint8_t* row, unsigned rowBits, unsigned first,
                unsigned count) const;
  void store(uint8_t* row, unsigned first, uint8_t* pixels, unsigned count);

  RunFunction run_ = nullptr;
  CombineOperation operation_;
  unsigned bits_;
  unsigned sourceBits_;
  unsigned workBytes_;     // of a pixel while it is worked on
  uint8_t mask_;           // the bits of a working byte that count
  PackFunction pack_;      // below 8 bits, else null
  UnpackFunction unpack_;  // below 8 bits, else null
  // Where arithmetic leaves the alpha alone, else null.
  void (*putColors_)(uint8_t* pixels, const uint8_t* colors, unsigned count) = nullptr;
  RGBQUAD sourcePalette_[256];
  RGBQUAD destinationPalette_[256];
  RowConverter sourceToWork_;
  RowConverter destinationToWork_;
  RowConverter workToDestination_;
};

}  // namespace zavo
