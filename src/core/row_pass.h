// Reading the rows of one bitmap while writing those of another: what every operation that builds a new image does.
#pragma once

#include <zavo.h>

#include "core/owners.h"
#include "core/rows.h"
#include "core/status.h"

namespace zavo {

// Both bitmaps are locked while this lives.
class RowPass {
 public:
  RowPass(BitmapHandle& target, BitmapHandle& source)
      : targetLock_(target), sourceLock_(source), reader(source), writer(target) {}

  // KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open() {
    const int status = reader.open();
    return status == KSUCCESS ? writer.open() : status;
  }

 private:
  BitmapLock targetLock_;
  BitmapLock sourceLock_;

 public:
  RowReader reader;  // of the source
  RowWriter writer;  // of the target
};

}  // namespace zavo
