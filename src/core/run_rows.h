// Rows of run-length storage: their runs as they lie in the heap, and packed bits translated on the fly.
//
// Stored runs add up to Width; a blank row may have none. Whatever a row is given is brought to that form first.
// A write sets DataSize to the heap's size, and a row whose runs the heap cannot hold stays as it was.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/memory.h"
#include "core/rows.h"
#include "core/run_records.h"

namespace zavo {

// The runs of a row of run-length storage, where they lie: valid until the bitmap is written to.
[[nodiscard]] RunSpan runRow(const BitmapHandle& bitmap, unsigned row);

// Gives a row these runs, which must not lie in the bitmap itself. KSUCCESS or KERR_NO_MEMORY.
[[nodiscard]] int putRunRow(BitmapHandle& bitmap, unsigned row, RunSpan runs);

// Gives pixels `column` to `column` + `count` - 1, which must lie in the row, the first `count` pixels of `runs`.
[[nodiscard]] int putRunRowPiece(BitmapHandle& bitmap, unsigned row, unsigned column, RunSpan runs, unsigned count);

// Gives the pixels of a list of segments those of a packed row; see Zv_PutBitmapRowSegments.
[[nodiscard]] int putRunRowSegments(BitmapHandle& bitmap, const uint8_t* bits, unsigned row, unsigned columnOffset,
                                    const unsigned* segments, unsigned count);

// Mirrors a row left to right. KSUCCESS or KERR_NO_MEMORY.
[[nodiscard]] int mirrorRunRow(BitmapHandle& bitmap, unsigned row);

// What readRow and writeRow do for run-length storage. A read longer than the rest of the row fills the following
// bytes with the same row again; a write goes on in the following rows. Both differ on purpose.
int readRunRows(const BitmapHandle& bitmap, uint8_t* buffer, unsigned row, unsigned column, unsigned bytes);
int writeRunRows(BitmapHandle& bitmap, const uint8_t* buffer, unsigned row, unsigned column, unsigned bytes);

// Reads stored rows of any 1-bit bitmap as runs: straight from the heap of run-length storage, else encoded. The
// bitmap must be locked and must outlive the reader.
class RunRowReader {
 public:
  explicit RunRowReader(BitmapHandle& bitmap) : bitmap_(bitmap), packedRows_(bitmap) {}

  // Takes buffers where the storage needs them. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open();

  // The runs of a row, valid until the next call or write; pixels past the last run are 0. Null when the row could
  // not be read, see status().
  [[nodiscard]] const RunSpan* row(unsigned index);

  // The code of the last failed row.
  [[nodiscard]] int status() const { return packedRows_.status(); }

 private:
  BitmapHandle& bitmap_;
  RowReader packedRows_;
  OsBlock<uint16_t> buffer_;
  RunSpan runs_;
};

}  // namespace zavo
