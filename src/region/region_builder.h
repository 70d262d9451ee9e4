// Builds a region row by row, top to bottom.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/memory.h"
#include "region/region.h"

namespace zavo {

// Rows and runs must lie in the rectangle the builder is started on; within a row, runs come in order of their starts.
// Rows that are passed over are empty.
class RegionBuilder {
 public:
  // What the bounds of the finished region are: those of its runs, or the whole rectangle.
  enum class Bounds { ofRuns, asStarted };

  // Prepares for rows and columns of `area`. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int start(const RECT& area);

  // Adds a run to the row being built; one with start >= end adds nothing. Runs that touch become one.
  void addRun(int start, int end) {
    if (start >= end) return;
    if (count_ != 0 && start <= row_[count_ - 1]) {
      if (end > row_[count_ - 1]) row_[count_ - 1] = end;
      return;
    }
    row_[count_] = start;
    row_[count_ + 1] = end;
    count_ += 2;
  }

  // Ends the row being built and stores it as row `y`, below all rows before it. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int endRow(int y);

  // Stores the row ended last once more, as row `y`.
  [[nodiscard]] int repeatRow(int y);

  // Hands the region over; the builder can be started again. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int finish(OwnedRegion& region, Bounds bounds = Bounds::ofRuns);

 private:
  [[nodiscard]] int claimRow();

  RECT area_ = {};
  RECT bounds_ = {};  // of the rows stored so far; no rows while right is 0 and bottom is 0
  bool anyRuns_ = false;
  uint64_t rowLimit_ = 0;  // most values a row can have
  uint64_t step_ = 0;      // smallest growth of the run data, in values
  uint64_t capacity_ = 0;  // of the run data, in values
  uint64_t used_ = 0;      // values stored
  OsBlock<RegionRow> rows_;
  OsBlock<int> values_;
  int* row_ = nullptr;  // the row being built, behind the values stored
  unsigned count_ = 0;  // its values
  uint64_t lastOffset_ = 0;
  unsigned lastCount_ = 0;
};

}  // namespace zavo
