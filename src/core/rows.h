// Rows of a bitmap, whatever its storage. Inner code asks RowReader or RowWriter for a row and works on it where it
// lies; the exported row functions copy.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <cstring>

#include "core/memory.h"
#include "core/status.h"

namespace zavo {

// The bitmap's rows lie one after another at Data: a mapped section, or global memory that is locked.
[[nodiscard]] inline bool hasDirectRows(const BitmapHandle& bitmap) {
  return (bitmap.Flags & (BMF_MEMORY | BMF_RUNLENGTH)) == BMF_MEMORY && bitmap.Data != nullptr;
}

// Two records describe the same pixels, as copies of one record do.
[[nodiscard]] inline bool sharesPixels(const BitmapHandle& a, const BitmapHandle& b) {
  return a.StorageHandle == b.StorageHandle && (a.StorageHandle != nullptr || a.Data == b.Data);
}

// Address of a stored row; only for bitmaps with direct rows.
[[nodiscard]] inline uint8_t* directRow(const BitmapHandle& bitmap, unsigned row) {
  return bitmap.Data + size_t{row} * bitmap.BytesPerLine;
}

// Reads whole stored rows. The bitmap must be locked and must outlive the reader.
class RowReader {
 public:
  explicit RowReader(BitmapHandle& bitmap) : bitmap_(bitmap), direct_(hasDirectRows(bitmap)) {}

  // Takes a row buffer where the storage needs one. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open();

  // BytesPerLine bytes of a stored row, valid until the next call; null when it could not be read, see status().
  [[nodiscard]] const uint8_t* row(unsigned index) {
    if (direct_) return directRow(bitmap_, index);
    return fetch(index);
  }

  // The code of the last failed row.
  [[nodiscard]] int status() const { return status_; }

 private:
  const uint8_t* fetch(unsigned index);

  BitmapHandle& bitmap_;
  bool direct_;
  int status_ = KSUCCESS;
  OsBlock<uint8_t> buffer_;
};

// Writes whole stored rows. The bitmap must be locked and must outlive the writer. Ask for a row, fill all of its
// BytesPerLine bytes (or change what edit() gives), then commit it before asking for the next.
class RowWriter {
 public:
  explicit RowWriter(BitmapHandle& bitmap) : bitmap_(bitmap), direct_(hasDirectRows(bitmap)) {}

  // Takes a row buffer where the storage needs one. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open();

  // Where to write a stored row; what it holds is undefined.
  [[nodiscard]] uint8_t* row(unsigned index) { return direct_ ? directRow(bitmap_, index) : buffer_.get(); }

  // A stored row with its content, to be changed; null when it could not be read, see status().
  [[nodiscard]] uint8_t* edit(unsigned index);

  // Stores the row. KSUCCESS or the code of the failed write.
  [[nodiscard]] int commit(unsigned index) { return direct_ ? KSUCCESS : store(index); }

  // Stores row `index` with the content of row `previous`, the one stored last.
  [[nodiscard]] int repeat(unsigned index, unsigned previous) {
    if (!direct_) return store(index);
    memcpy(directRow(bitmap_, index), directRow(bitmap_, previous), bitmap_.BytesPerLine);
    return KSUCCESS;
  }

  // The code of the last failed edit().
  [[nodiscard]] int status() const { return status_; }

 private:
  int store(unsigned index);

  BitmapHandle& bitmap_;
  bool direct_;
  int status_ = KSUCCESS;
  OsBlock<uint8_t> buffer_;
};

// Moves bytes at a position of a temporary file. The count, which may be short, or a negative code.
int readFile(uint8_t* bytes, const BitmapHandle& bitmap, unsigned position, unsigned count);
int writeFile(const BitmapHandle& bitmap, unsigned position, const uint8_t* bytes, unsigned count);

// What became of a transfer of `count` bytes that gave `done`: KSUCCESS, its negative code, or `shortTransfer`.
[[nodiscard]] inline int transferStatus(int done, unsigned count, int shortTransfer) {
  if (done == static_cast<int>(count)) return KSUCCESS;
  return done < 0 ? done : shortTransfer;
}

// Byte offset of a stored row, kept in the handle so that walking rows in order costs an addition a row.
unsigned locateRow(BitmapHandle& bitmap, unsigned row);

// The exported row functions, on checked handles. Results are byte counts or negative codes.
int readRow(BitmapHandle& bitmap, uint8_t* buffer, unsigned row, unsigned column, unsigned bytes);
int writeRow(BitmapHandle& bitmap, const uint8_t* buffer, unsigned row, unsigned column, unsigned bytes);

// Writes the pixels of a row that lie in a list of segments; see Zv_PutBitmapRowSegments.
int writeRowSegments(BitmapHandle& bitmap, const uint8_t* buffer, unsigned row, unsigned columnOffset,
                     const unsigned* segments, unsigned count, bool keepAlpha);

}  // namespace zavo
