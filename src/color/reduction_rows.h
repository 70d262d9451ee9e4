// The rows of a colour reduction: planned once, run for every row.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/color_cells.h"
#include "color/conversion.h"
#include "color/dither.h"
#include "color/reduction_target.h"
#include "core/memory.h"
#include "core/packed_pixels.h"

namespace zavo {

// A few KB, meant for the stack.
class ReductionRows {
 public:
  // Takes work rows. Colours that the target does not have are dithered by `method`, 0 for the nearest entry. The
  // target must outlive this. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int prepare(const BitmapHandle& source, const ReductionTarget& target, int method);

  // Converts a stored row of the source; rows go in order from row 0.
  void convert(uint8_t* destination, const uint8_t* source) { (this->*run_)(destination, source); }

 private:
  using RunFunction = void (ReductionRows::*)(uint8_t* destination, const uint8_t* source);

  void copyRow(uint8_t* destination, const uint8_t* source);
  void convertRow(uint8_t* destination, const uint8_t* source);
  void grayRow(uint8_t* destination, const uint8_t* source);
  void mapRow(uint8_t* destination, const uint8_t* source);
  template <bool byTable>
  void matchRow(uint8_t* destination, const uint8_t* source);
  void ditherColors(uint8_t* destination, const uint8_t* source);
  void ditherGray(uint8_t* destination, const uint8_t* source);
  void packMapped(uint8_t* destination);

  int planConversion(const BitmapHandle& source, int bits, int order);
  int planGray(const BitmapHandle& source, const ReductionTarget& target);
  int planMap(const ReductionTarget& target);
  int planMatch(const BitmapHandle& source, const ReductionTarget& target);
  int planDither(const BitmapHandle& source, const ReductionTarget& target, int method);

  RunFunction run_ = nullptr;
  RGBQUAD palette_[256];  // the source's, of up to 8 bits
  unsigned width_ = 0;
  int sourceBits_ = 0;
  int targetBits_ = 0;
  RowConverter converter_;  // to the target, or to what the next stage works on
  ColorCells cells_;
  const uint32_t* matchTable_ = nullptr;  // index + 1 by colour key, before the cells
  unsigned colorCount_ = 0;               // of the target
  UnpackFunction unpack_ = nullptr;
  PackFunction pack_ = nullptr;
  OwnedDitherRun dither_;
  uint8_t map_[256];          // target index of a source index or grey level
  OsBlock<uint8_t> pixels_;   // a row of blue, green, red and a fourth byte
  OsBlock<uint8_t> indexes_;  // a row of indexes or grey levels
};

}  // namespace zavo
