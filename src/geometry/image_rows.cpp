// Whole images in memory, copied only where the storage has no addressable rows.
#include "geometry/image_rows.h"

#include <cstring>

namespace zavo {

int ImageRows::openForWriting() {
  if (hasDirectRows(bitmap_)) {
    first_ = directRow(bitmap_, 0);
    return KSUCCESS;
  }
  copy_ = OsBlock<uint8_t>::allocate(uint64_t{bitmap_.BytesPerLine} * static_cast<unsigned>(bitmap_.Height));
  first_ = copy_.get();
  return copy_ ? KSUCCESS : KERR_NO_MEMORY;
}

int ImageRows::openForReading() {
  if (const int status = openForWriting(); status != KSUCCESS) return status;
  if (!copy_) return KSUCCESS;
  RowReader reader(bitmap_);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap_.Height); ++y) {
    const uint8_t* stored = reader.row(y);
    if (stored == nullptr) return reader.status();
    memcpy(row(y), stored, bitmap_.BytesPerLine);
  }
  return KSUCCESS;
}

int ImageRows::commit() {
  if (!copy_) return KSUCCESS;
  RowWriter writer(bitmap_);
  if (const int status = writer.open(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap_.Height); ++y) {
    memcpy(writer.row(y), row(y), bitmap_.BytesPerLine);
    if (const int status = writer.commit(y); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace zavo
