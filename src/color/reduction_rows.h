// The rows of a colour reduction: planned once, run for every row.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/color_matcher.h"
#include "color/conversion.h"
#include "color/reduction_target.h"
#include "core/memory.h"
#include "core/packed_pixels.h"

namespace zavo {

// A few KB, meant for the stack.
class ReductionRows {
 public:
  // Takes work rows. The target must outlive this. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int prepare(const BitmapHandle& source, const ReductionTarget& target);

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
  void packMapped(uint8_t* destination);

  int planConversion(const BitmapHandle& source, int bits, int order);
  int planGray(const BitmapHandle& source, const ReductionTarget& target);
  int planMap(const BitmapHandle& source, const ReductionTarget& target);
  int planMatch(const BitmapHandle& source, const ReductionTarget& target);

  RunFunction run_ = nullptr;
  unsigned width_ = 0;
  int sourceBits_ = 0;
  int targetBits_ = 0;
  RowConverter converter_;  // to the target, or to what the next stage works on
  ColorMatcher matcher_;
  UnpackFunction unpack_ = nullptr;
  PackFunction pack_ = nullptr;
  uint8_t map_[256];          // target index of a source index or grey level
  OsBlock<uint8_t> pixels_;   // a row of blue, green, red and a fourth byte
  OsBlock<uint8_t> indexes_;  // a row of target indexes
};

}  // namespace zavo
