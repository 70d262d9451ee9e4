// All rows of a bitmap at one address, for work that walks columns or jumps about.
#pragma once

#include <zavo.h>

#include <cstddef>
#include <cstdint>

#include "core/memory.h"
#include "core/rows.h"

namespace zavo {

// Rows in memory are used where they lie; run-length rows and temporary files go through a copy of the whole image.
// The bitmap must be locked and must outlive this.
class ImageRows {
 public:
  explicit ImageRows(BitmapHandle& bitmap) : bitmap_(bitmap) {}

  // Makes the rows readable. KSUCCESS, KERR_NO_MEMORY or the code of a failed row.
  [[nodiscard]] int openForReading();
  // Makes the rows writeable; what they hold is undefined unless the storage is direct. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int openForWriting();
  // Stores rows that were written to a copy. KSUCCESS or the code of a failed row.
  [[nodiscard]] int commit();

  [[nodiscard]] uint8_t* row(unsigned index) const { return first_ + size_t{index} * bitmap_.BytesPerLine; }
  // Bytes from one row to the next.
  [[nodiscard]] ptrdiff_t stride() const { return static_cast<ptrdiff_t>(bitmap_.BytesPerLine); }

 private:
  BitmapHandle& bitmap_;
  OsBlock<uint8_t> copy_;
  uint8_t* first_ = nullptr;
};

}  // namespace zavo
