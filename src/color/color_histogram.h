// How often each 15-bit colour occurs.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/memory.h"

namespace zavo {

// Counts colours by their key (color/palettes.h). Counts are kept at 32768 or less: when one would pass it, all are
// halved, rounding up, so that no colour that occurs drops to 0.
class ColorHistogram {
 public:
  // Takes the memory. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open();

  // Adds the pixels of an allocated bitmap, row by row. KSUCCESS, or the code of a failed read.
  [[nodiscard]] int add(BitmapHandle& bitmap);

  // The keys that occur, in order of first appearance.
  [[nodiscard]] uint16_t* keys() const { return keys_.get(); }
  [[nodiscard]] unsigned keyCount() const { return keyCount_; }
  [[nodiscard]] uint32_t count(unsigned key) const { return counts_[key]; }

  // The table of counts, handed over.
  [[nodiscard]] OsBlock<uint32_t> releaseCounts() { return std::move(counts_); }

 private:
  void addRow(const uint8_t* colors, unsigned width);
  void halve();

  OsBlock<uint32_t> counts_;
  OsBlock<uint16_t> keys_;
  unsigned keyCount_ = 0;
};

}  // namespace zavo
