// Rows of run-length storage. A changed row is put together in the row table's scratch buffer, which holds the most
// runs a row can take, and then copied into its heap block: the row is whole at any time.
#include "core/run_rows.h"

#include <algorithm>
#include <cstring>

#include "core/row_table.h"

namespace zavo {
namespace {

unsigned widthOf(const BitmapHandle& bitmap) {
  return static_cast<unsigned>(bitmap.Width);
}

uint16_t* scratchOf(const BitmapHandle& bitmap) {
  return reinterpret_cast<uint16_t*>(rowTable(bitmap).scratch);
}

uint16_t* blockRuns(const RowTable& table, uint32_t block) {
  return reinterpret_cast<uint16_t*>(runBlockPayload(table.heap, block));
}

bool addUpTo(RunSpan runs, unsigned width) {
  uint64_t pixels = 0;
  for (const unsigned run : runs) pixels += run;
  return pixels == width;
}

// Makes the row's block hold `entries` runs, keeping those it has. False without memory, the row then unchanged.
bool resizeRow(RowTable& table, unsigned row, size_t entries) {
  RowTableEntry& entry = table.rows[row];
  if (entry.block != 0 && entry.entries == entries) return true;
  if (entries > UINT32_MAX / sizeof(uint16_t)) return false;
  const auto bytes = static_cast<uint32_t>(entries * sizeof(uint16_t));
  const uint32_t block =
      entry.block == 0 ? allocateRunBlock(table.heap, bytes) : reallocateRunBlock(table.heap, entry.block, bytes);
  if (block == 0) return false;
  entry = {.block = block, .entries = static_cast<uint32_t>(entries)};
  return true;
}

// Stores runs that add up to Width.
int storeRow(BitmapHandle& bitmap, unsigned row, RunSpan runs) {
  RowTable& table = rowTable(bitmap);
  const bool fits = resizeRow(table, row, runs.size());
  if (fits) memcpy(blockRuns(table, table.rows[row].block), runs.data(), runs.size_bytes());
  bitmap.DataSize = table.heap->totalBytes;
  return fits ? KSUCCESS : KERR_NO_MEMORY;
}

// Stores what was put together in the scratch buffer.
int storeScratch(BitmapHandle& bitmap, unsigned row, RunBuilder& builder) {
  const unsigned entries = builder.finish();
  return storeRow(bitmap, row, {scratchOf(bitmap), entries});
}

// Gives part of a row packed pixels.
int putBits(BitmapHandle& bitmap, unsigned row, unsigned column, const uint8_t* bits, unsigned count) {
  const RunSpan stored = runRow(bitmap, row);
  RunBuilder builder(scratchOf(bitmap));
  builder.addRuns(stored, 0, column);
  builder.addBits(bits, 0, count);
  builder.addRuns(stored, column + count, widthOf(bitmap) - column - count);
  return storeScratch(bitmap, row, builder);
}

bool isInside(const BitmapHandle& bitmap, unsigned row, unsigned column) {
  return row < static_cast<unsigned>(bitmap.Height) && column < widthOf(bitmap);
}

// Pixels of a row from `column` on that `bytes` bytes hold.
unsigned pixelsIn(const BitmapHandle& bitmap, unsigned column, unsigned bytes) {
  return static_cast<unsigned>(std::min<uint64_t>(widthOf(bitmap) - column, uint64_t{bytes} * 8));
}

// Bytes of a stored row from `column` on, of those `bytes`.
unsigned bytesOfRow(const BitmapHandle& bitmap, unsigned column, unsigned bytes) {
  return std::min(bitmap.BytesPerLine - column / 8, bytes);
}

}  // namespace

RunSpan runRow(const BitmapHandle& bitmap, unsigned row) {
  const RowTable& table = rowTable(bitmap);
  const RowTableEntry& entry = table.rows[row];
  if (entry.block == 0) return {};
  return {blockRuns(table, entry.block), entry.entries};
}

int putRunRow(BitmapHandle& bitmap, unsigned row, RunSpan runs) {
  const unsigned width = widthOf(bitmap);
  if (addUpTo(runs, width)) return storeRow(bitmap, row, runs);
  return putRunRowPiece(bitmap, row, 0, runs, width);
}

int putRunRowPiece(BitmapHandle& bitmap, unsigned row, unsigned column, RunSpan runs, unsigned count) {
  const RunSpan stored = runRow(bitmap, row);
  RunBuilder builder(scratchOf(bitmap));
  builder.addRuns(stored, 0, column);
  builder.addRuns(runs, 0, count);
  builder.addRuns(stored, column + count, widthOf(bitmap) - column - count);
  return storeScratch(bitmap, row, builder);
}

int putRunRowSegments(BitmapHandle& bitmap, const uint8_t* bits, unsigned row, unsigned columnOffset,
                      const unsigned* segments, unsigned count) {
  if (!isInside(bitmap, row, 0)) return KERR_BAD_PARAMETER;
  const unsigned width = widthOf(bitmap);
  const RunSpan stored = runRow(bitmap, row);
  RunBuilder builder(scratchOf(bitmap));
  unsigned done = 0;
  for (unsigned i = 0; i + 1 < count; i += 2) {
    // A list out of order or beyond the row must not overrun the scratch buffer.
    const unsigned start = std::max(segments[i] + columnOffset, done);
    const unsigned end = std::min(segments[i + 1] + columnOffset, width);
    if (start >= end) continue;
    builder.addRuns(stored, done, start - done);
    builder.addBits(bits, start - columnOffset, end - start);
    done = end;
  }
  if (done == 0) {
    bitmap.DataSize = rowTable(bitmap).heap->totalBytes;
    return KSUCCESS;
  }
  builder.addRuns(stored, done, width - done);
  return storeScratch(bitmap, row, builder);
}

// An even number of runs ends in a run of 1 bits, so the mirrored row begins with an empty run of 0 bits; and an empty
// first run has no counterpart.
int mirrorRunRow(BitmapHandle& bitmap, unsigned row) {
  const RunSpan stored = runRow(bitmap, row);
  if (stored.empty()) return KSUCCESS;
  RowTable& table = rowTable(bitmap);
  const size_t entries = stored.size();
  const bool dropsFirst = stored.front() == 0;
  const bool startsWithOnes = entries % 2 == 0;
  int status = KSUCCESS;
  if (startsWithOnes && !dropsFirst) {
    if (resizeRow(table, row, entries + 1)) {
      uint16_t* runs = blockRuns(table, table.rows[row].block);
      runs[entries] = 0;
      std::reverse(runs, runs + entries + 1);
    } else {
      status = KERR_NO_MEMORY;
    }
  } else {
    uint16_t* runs = blockRuns(table, table.rows[row].block);
    std::reverse(runs + (startsWithOnes ? 1 : 0), runs + entries);
    // A block is never too large to become smaller.
    if (dropsFirst && !startsWithOnes && !resizeRow(table, row, entries - 1)) status = KERR_NO_MEMORY;
  }
  bitmap.DataSize = table.heap->totalBytes;
  return status;
}

int readRunRows(const BitmapHandle& bitmap, uint8_t* buffer, unsigned row, unsigned column, unsigned bytes) {
  column &= ~7u;
  if (!isInside(bitmap, row, column)) return KERR_BAD_PARAMETER;
  const RunSpan runs = runRow(bitmap, row);
  for (unsigned remaining = bytes; remaining > 0; column = 0) {
    const unsigned pixels = pixelsIn(bitmap, column, remaining);
    const unsigned used = pixels / 8 + (pixels % 8 != 0);
    const unsigned taken = bytesOfRow(bitmap, column, remaining);
    decodeRuns(buffer, runs, column, pixels);
    memset(buffer + used, 0, taken - used);
    buffer += taken;
    remaining -= taken;
  }
  return static_cast<int>(bytes);
}

int writeRunRows(BitmapHandle& bitmap, const uint8_t* buffer, unsigned row, unsigned column, unsigned bytes) {
  column &= ~7u;
  if (!isInside(bitmap, row, column)) return KERR_BAD_PARAMETER;
  unsigned remaining = bytes;
  for (; remaining > 0 && row < static_cast<unsigned>(bitmap.Height); ++row, column = 0) {
    if (const int status = putBits(bitmap, row, column, buffer, pixelsIn(bitmap, column, remaining));
        status != KSUCCESS) {
      return status;
    }
    const unsigned taken = bytesOfRow(bitmap, column, remaining);
    buffer += taken;
    remaining -= taken;
  }
  bitmap.DataSize = rowTable(bitmap).heap->totalBytes;
  return static_cast<int>(bytes - remaining);
}

int RunRowReader::open() {
  if (isRunLength(bitmap_)) return KSUCCESS;
  buffer_ = OsBlock<uint16_t>::allocate(mostRuns(widthOf(bitmap_)));
  if (!buffer_) return KERR_NO_MEMORY;
  return packedRows_.open();
}

const RunSpan* RunRowReader::row(unsigned index) {
  if (isRunLength(bitmap_)) {
    runs_ = runRow(bitmap_, index);
    return &runs_;
  }
  const uint8_t* bits = packedRows_.row(index);
  if (bits == nullptr) return nullptr;
  runs_ = {buffer_.get(), encodeRuns(buffer_.get(), bits, 0, widthOf(bitmap_))};
  return &runs_;
}

}  // namespace zavo
