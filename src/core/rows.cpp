// Rows moved in and out of a bitmap's storage, and the inner access that works on them in place.
#include "core/rows.h"

#include <cstring>

#include "core/run_rows.h"
#include "core/sizes.h"
#include "core/storage.h"

namespace zavo {
namespace {

// Where a row piece begins, in bytes from the start of the pixels.
unsigned locatePiece(BitmapHandle& bitmap, unsigned row, unsigned column) {
  return locateRow(bitmap, row) + columnOffset(column, static_cast<unsigned>(bitmap.BitsPerPixel));
}

bool seekTo(const BitmapHandle& bitmap, unsigned position) {
  return Zv_OsSeek(fileHandle(bitmap), static_cast<int>(position), 0) == position;
}

}  // namespace

int readFile(uint8_t* bytes, const BitmapHandle& bitmap, unsigned position, unsigned count) {
  if (!seekTo(bitmap, position)) return KERR_SEEK;
  const int done = Zv_OsRead(fileHandle(bitmap), bytes, count);
  return done == -1 ? KERR_READ : done;
}

int writeFile(const BitmapHandle& bitmap, unsigned position, const uint8_t* bytes, unsigned count) {
  if (!seekTo(bitmap, position)) return KERR_SEEK;
  const int done = Zv_OsWrite(fileHandle(bitmap), bytes, count);
  return done == -1 ? KERR_WRITE : done;
}

// The handle keeps the last row, so that walking rows in order, either way, costs one addition a row.
unsigned locateRow(BitmapHandle& bitmap, unsigned row) {
  const unsigned distance = static_cast<unsigned>(bitmap.CachedRow) - row;
  if (distance == 1) {
    bitmap.CachedRowOffset -= bitmap.BytesPerLine;
  } else if (distance == 0xFFFFFFFFu) {
    bitmap.CachedRowOffset += bitmap.BytesPerLine;
  } else if (distance != 0) {
    bitmap.CachedRowOffset = row * bitmap.BytesPerLine;
  }
  bitmap.CachedRow = static_cast<int>(row);
  return bitmap.CachedRowOffset;
}

int readRow(BitmapHandle& bitmap, uint8_t* buffer, unsigned row, unsigned column, unsigned bytes) {
  if (isRunLength(bitmap)) return readRunRows(bitmap, buffer, row, column, bytes);
  const unsigned position = locatePiece(bitmap, row, column);
  if ((bitmap.Flags & BMF_MEMORY) != 0) {
    if (bitmap.Data == nullptr) return KERR_NO_MEMORY;
    memcpy(buffer, bitmap.Data + position, bytes);
    return static_cast<int>(bytes);
  }
  return (bitmap.Flags & BMF_DISK) != 0 ? readFile(buffer, bitmap, position, bytes) : KERR_NO_MEMORY;
}

int writeRow(BitmapHandle& bitmap, const uint8_t* buffer, unsigned row, unsigned column, unsigned bytes) {
  if (isRunLength(bitmap)) return writeRunRows(bitmap, buffer, row, column, bytes);
  const unsigned position = locatePiece(bitmap, row, column);
  if ((bitmap.Flags & BMF_MEMORY) != 0) {
    if (bitmap.Data == nullptr) return KERR_NO_MEMORY;
    memcpy(bitmap.Data + position, buffer, bytes);
    return static_cast<int>(bytes);
  }
  return (bitmap.Flags & BMF_DISK) != 0 ? writeFile(bitmap, position, buffer, bytes) : KERR_NO_MEMORY;
}

int RowReader::open() {
  if (direct_) return KSUCCESS;
  buffer_ = OsBlock<uint8_t>::allocate(bitmap_.BytesPerLine);
  return buffer_ ? KSUCCESS : KERR_NO_MEMORY;
}

const uint8_t* RowReader::fetch(unsigned index) {
  const int done = readRow(bitmap_, buffer_.get(), index, 0, bitmap_.BytesPerLine);
  status_ = transferStatus(done, bitmap_.BytesPerLine, KERR_READ);
  return status_ == KSUCCESS ? buffer_.get() : nullptr;
}

int RowWriter::open() {
  if (direct_) return KSUCCESS;
  buffer_ = OsBlock<uint8_t>::allocate(bitmap_.BytesPerLine);
  return buffer_ ? KSUCCESS : KERR_NO_MEMORY;
}

uint8_t* RowWriter::edit(unsigned index) {
  uint8_t* bits = row(index);
  if (direct_) return bits;
  const int done = readRow(bitmap_, bits, index, 0, bitmap_.BytesPerLine);
  status_ = transferStatus(done, bitmap_.BytesPerLine, KERR_READ);
  return status_ == KSUCCESS ? bits : nullptr;
}

int RowWriter::store(unsigned index) {
  const int done = writeRow(bitmap_, buffer_.get(), index, 0, bitmap_.BytesPerLine);
  return transferStatus(done, bitmap_.BytesPerLine, KERR_WRITE);
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_GetBitmapRow(BitmapHandle* bitmap, unsigned char* buffer, unsigned row, unsigned bytes) {
  return Zv_GetBitmapRowCol(bitmap, buffer, row, 0, bytes);
}

int ZAVO_CALL Zv_GetBitmapRowCol(BitmapHandle* bitmap, unsigned char* buffer, unsigned row, unsigned column,
                                 unsigned bytes) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (buffer == nullptr) return KERR_BAD_PARAMETER;
  return readRow(*bitmap, buffer, row, column, bytes);
}

int ZAVO_CALL Zv_PutBitmapRow(BitmapHandle* bitmap, const unsigned char* buffer, unsigned row, unsigned bytes) {
  return Zv_PutBitmapRowCol(bitmap, buffer, row, 0, bytes);
}

int ZAVO_CALL Zv_PutBitmapRowCol(BitmapHandle* bitmap, const unsigned char* buffer, unsigned row, unsigned column,
                                 unsigned bytes) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (buffer == nullptr) return KERR_BAD_PARAMETER;
  return writeRow(*bitmap, buffer, row, column, bytes);
}
