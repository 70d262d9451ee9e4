// Where painting takes stored rows from: the bitmap, or rows that the caller holds.
#pragma once

#include <zavo.h>

#include "core/rows.h"

namespace zavo {

class PaintRows {
 public:
  // Rows of the bitmap, which must be locked.
  explicit PaintRows(BitmapHandle& bitmap) : reader_(bitmap) {}
  // Rows `first` and following lie one after another at `held`; their number has been seen to by the geometry.
  PaintRows(BitmapHandle& bitmap, const uint8_t* held, unsigned first)
      : reader_(bitmap), held_(held), first_(first), rowBytes_(bitmap.BytesPerLine) {}

  [[nodiscard]] int open() { return held_ != nullptr ? KSUCCESS : reader_.open(); }

  // A stored row; null when it could not be read, see status().
  [[nodiscard]] const uint8_t* row(unsigned index) {
    return held_ != nullptr ? held_ + size_t{index - first_} * rowBytes_ : reader_.row(index);
  }
  [[nodiscard]] int status() const { return reader_.status(); }

 private:
  RowReader reader_;
  const uint8_t* held_ = nullptr;
  unsigned first_ = 0;
  unsigned rowBytes_ = 0;
};

}  // namespace zavo
