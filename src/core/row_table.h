// The row table: what Data of a run-length bitmap points to.
#pragma once

#include <zavo.h>

#include <cstddef>
#include <cstdint>

#include "core/run_heap.h"

namespace zavo {

struct RowTableEntry {
  uint32_t block;    // heap block with the row's runs; 0: the row is blank, one run of 0 pixels
  uint32_t entries;  // number of 16-bit runs in the block
};

struct RowTable {
  uint8_t* scratch;       // work buffer of the run-length row functions
  uint32_t scratchBytes;  // Width * 2 + 2
  RunHeap heap;
  uint32_t reserved;
  RowTableEntry rows[1];  // Height of them

  // Bytes of a table for `height` rows.
  static constexpr uint64_t bytesFor(uint64_t height) { return offsetof(RowTable, rows) + 8 * height; }
};

#ifndef _WIN64
static_assert(offsetof(RowTable, rows) == 16, "the table is a fixed layout");
#endif

[[nodiscard]] inline RowTable& rowTable(const BitmapHandle& bitmap) {
  return *reinterpret_cast<RowTable*>(bitmap.Data);
}

}  // namespace zavo
