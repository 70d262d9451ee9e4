// Rows of 1-bit bitmaps exchanged with callers as run records, whatever the storage: without unpacking for run-length
// storage, through packed bits for the others.
#include <zavo.h>

#include <algorithm>
#include <cstring>

#include "core/memory.h"
#include "core/owners.h"
#include "core/run_records.h"
#include "core/run_rows.h"
#include "core/sizes.h"
#include "core/status.h"

namespace zavo {
namespace {

// What a blank run-length row is split into where a piece of rows is read; whole rows use runs as long as they get.
constexpr unsigned longestBlankPiece = 32767;

uint8_t* appendRuns(uint8_t* record, RunSpan runs) {
  memcpy(recordRuns(record), runs.data(), runs.size_bytes());
  return finishRecord(record, static_cast<unsigned>(runs.size()));
}

uint8_t* appendBlank(uint8_t* record, unsigned width, unsigned longest) {
  return finishRecord(record, blankRuns(recordRuns(record), width, longest));
}

uint8_t* appendPiece(uint8_t* record, RunSpan runs, unsigned column, unsigned count) {
  RunBuilder builder(recordRuns(record));
  builder.addRuns(runs, column, count);
  return finishRecord(record, builder.finish());
}

// Packed pixels of rows whose storage is not run-length: where they lie, or in the caller's or an own buffer.
class PackedRows {
 public:
  explicit PackedRows(BitmapHandle& bitmap) : bitmap_(bitmap) {}

  // `workRow`: BytesPerLine bytes to use, or null. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open(uint8_t* workRow) {
    buffer_ = workRow;
    if (buffer_ != nullptr || hasDirectRows(bitmap_)) return KSUCCESS;
    own_ = OsBlock<uint8_t>::allocate(bitmap_.BytesPerLine);
    buffer_ = own_.get();
    return own_ ? KSUCCESS : KERR_NO_MEMORY;
  }

  // The bytes that hold `count` pixels from `column` on. KSUCCESS or a negative code.
  [[nodiscard]] int read(const uint8_t*& bits, unsigned row, unsigned column, unsigned count) {
    if (hasDirectRows(bitmap_)) {
      bits = directRow(bitmap_, row) + column / 8;
      return KSUCCESS;
    }
    bits = buffer_;
    const auto bytes = static_cast<unsigned>(packedBytesFor(column % 8 + count, 1));
    return transferStatus(readRow(bitmap_, buffer_, row, column, bytes), bytes, shortTransfer);
  }

  // Decodes `count` pixels and stores them as whole bytes, at the byte that holds `column`.
  [[nodiscard]] int write(RunSpan runs, unsigned row, unsigned column, unsigned count) {
    if (hasDirectRows(bitmap_)) {
      decodeRuns(directRow(bitmap_, row) + column / 8, runs, 0, count);
      return KSUCCESS;
    }
    const auto bytes = static_cast<unsigned>(packedBytesFor(count, 1));
    decodeRuns(buffer_, runs, 0, count);
    return transferStatus(writeRow(bitmap_, buffer_, row, column, bytes), bytes, shortTransfer);
  }

 private:
  // Callers of these functions know a short transfer, either way, as a failed write.
  static constexpr int shortTransfer = KERR_WRITE;

  BitmapHandle& bitmap_;
  uint8_t* buffer_ = nullptr;
  OsBlock<uint8_t> own_;
};

int checkBitmap(const BitmapHandle* bitmap, const void* buffer) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (bitmap->BitsPerPixel != 1) return KERR_BAD_BPP;
  return buffer == nullptr ? KERR_BAD_PARAMETER : KSUCCESS;
}

int checkPiece(const BitmapHandle* bitmap, const void* buffer, unsigned row, unsigned column) {
  if (const int status = checkBitmap(bitmap, buffer); status != KSUCCESS) return status;
  const bool inside = column < static_cast<unsigned>(bitmap->Width) && row < static_cast<unsigned>(bitmap->Height);
  return inside ? KSUCCESS : KERR_BAD_PARAMETER;
}

// `count` pixels, from a column of a row on; past the end of that row they go on in the following rows.
struct Piece {
  unsigned row;
  unsigned column;
  uint64_t count;
};

Piece wholeRows(const BitmapHandle& bitmap, unsigned row, unsigned rows) {
  return {row, 0, uint64_t{static_cast<unsigned>(bitmap.Width)} * rows};
}

// Calls transfer(row, column, count) for each row of a piece, up to the bitmap's last row. Gives the first status that
// is not KSUCCESS.
template <typename Transfer>
int forEachRow(const BitmapHandle& bitmap, Piece piece, Transfer transfer) {
  for (; piece.count > 0 && piece.row < static_cast<unsigned>(bitmap.Height); ++piece.row, piece.column = 0) {
    const unsigned restOfRow = static_cast<unsigned>(bitmap.Width) - piece.column;
    const auto pixels = static_cast<unsigned>(std::min<uint64_t>(restOfRow, piece.count));
    if (const int status = transfer(piece.row, piece.column, pixels); status != KSUCCESS) return status;
    piece.count -= pixels;
  }
  return KSUCCESS;
}

// A record for each row. A whole blank row is written as runs of up to `longestBlank` pixels.
void getFromRuns(uint8_t* record, const BitmapHandle& bitmap, const Piece& piece, unsigned longestBlank) {
  const auto width = static_cast<unsigned>(bitmap.Width);
  forEachRow(bitmap, piece, [&](unsigned row, unsigned column, unsigned count) {
    const RunSpan runs = runRow(bitmap, row);
    if (count != width) {
      record = appendPiece(record, runs, column, count);
    } else if (runs.empty()) {
      record = appendBlank(record, width, longestBlank);
    } else {
      record = appendRuns(record, runs);
    }
    return KSUCCESS;
  });
}

int putIntoRuns(BitmapHandle& bitmap, const uint8_t* record, const Piece& piece) {
  return forEachRow(bitmap, piece, [&](unsigned row, unsigned column, unsigned count) {
    const RunSpan runs = runsOfRecord(record);
    record += recordBytes(runs);
    if (count == static_cast<unsigned>(bitmap.Width)) return putRunRow(bitmap, row, runs);
    return putRunRowPiece(bitmap, row, column, runs, count);
  });
}

int getFromBits(uint8_t* record, BitmapHandle& bitmap, uint8_t* workRow, const Piece& piece) {
  PackedRows packed(bitmap);
  if (const int status = packed.open(workRow); status != KSUCCESS) return status;
  return forEachRow(bitmap, piece, [&](unsigned row, unsigned column, unsigned count) {
    const uint8_t* bits = nullptr;
    const int status = packed.read(bits, row, column, count);
    if (status == KSUCCESS) {
      record = finishRecord(record, encodeRuns(recordRuns(record), bits, column % 8, count));
    }
    return status;
  });
}

// Adds the bytes written to `bytes`.
int putIntoBits(BitmapHandle& bitmap, const uint8_t* record, uint8_t* workRow, const Piece& piece, unsigned& bytes) {
  PackedRows packed(bitmap);
  if (const int status = packed.open(workRow); status != KSUCCESS) return status;
  return forEachRow(bitmap, piece, [&](unsigned row, unsigned column, unsigned count) {
    const RunSpan runs = runsOfRecord(record);
    record += recordBytes(runs);
    bytes += static_cast<unsigned>(packedBytesFor(count, 1));
    return packed.write(runs, row, column, count);
  });
}

int getRecords(uint8_t* record, BitmapHandle& bitmap, uint8_t* workRow, const Piece& piece, unsigned longestBlank) {
  const BitmapLock lock(bitmap);
  if (!isRunLength(bitmap)) return getFromBits(record, bitmap, workRow, piece);
  getFromRuns(record, bitmap, piece, longestBlank);
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_GetBitmapRowCompressed(BitmapHandle* bitmap, unsigned char* workRow, void* buffer, unsigned row,
                                        unsigned rows) {
  if (const int status = checkBitmap(bitmap, buffer); status != KSUCCESS) return status;
  return getRecords(static_cast<uint8_t*>(buffer), *bitmap, workRow, wholeRows(*bitmap, row, rows), longestRun);
}

int ZAVO_CALL Zv_PutBitmapRowCompressed(BitmapHandle* bitmap, unsigned char* workRow, const void* buffer, unsigned row,
                                        unsigned rows) {
  if (const int status = checkBitmap(bitmap, buffer); status != KSUCCESS) return status;
  const BitmapLock lock(*bitmap);
  const auto* record = static_cast<const uint8_t*>(buffer);
  const Piece piece = wholeRows(*bitmap, row, rows);
  if (isRunLength(*bitmap)) return putIntoRuns(*bitmap, record, piece);
  unsigned bytes = 0;
  return putIntoBits(*bitmap, record, workRow, piece, bytes);
}

int ZAVO_CALL Zv_GetBitmapRowColCompressed(BitmapHandle* bitmap, unsigned char* workRow, void* buffer, unsigned row,
                                           unsigned column, unsigned count) {
  if (const int status = checkPiece(bitmap, buffer, row, column); status != KSUCCESS) return status;
  return getRecords(static_cast<uint8_t*>(buffer), *bitmap, workRow, {row, column, count}, longestBlankPiece);
}

// The result depends on the storage, on purpose: callers of the packed kinds expect a row function's byte count.
int ZAVO_CALL Zv_PutBitmapRowColCompressed(BitmapHandle* bitmap, unsigned char* workRow, const void* buffer,
                                           unsigned row, unsigned column, unsigned count) {
  if (const int status = checkPiece(bitmap, buffer, row, column); status != KSUCCESS) return status;
  const BitmapLock lock(*bitmap);
  const auto* record = static_cast<const uint8_t*>(buffer);
  const Piece piece{row, column, count};
  if (isRunLength(*bitmap)) return putIntoRuns(*bitmap, record, piece);
  unsigned bytes = 0;
  const int status = putIntoBits(*bitmap, record, workRow, piece, bytes);
  return status == KSUCCESS ? static_cast<int>(bytes) : status;
}
