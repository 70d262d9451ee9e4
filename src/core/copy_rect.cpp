// Copying a rectangle of a bitmap into a bitmap of its own, and trimming a bitmap to a rectangle.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "core/duplicate.h"
#include "core/owners.h"
#include "core/region_services.h"
#include "core/row_pass.h"
#include "core/sizes.h"
#include "core/status.h"
#include "core/storage.h"

namespace zavo {
namespace {

// The pixels that a rectangle and a bitmap share, and where they begin in either. Distances between a rectangle's
// sides and the bitmap's may pass 32 bits before they are cut.
struct SharedArea {
  unsigned sourceColumn, sourceRow;
  unsigned column, row;  // in the rectangle
  unsigned width, height;

  [[nodiscard]] bool isEmpty() const { return width == 0 || height == 0; }
};

struct Span {
  unsigned start, length;
};

// The part of `start` .. `start + length` that lies in 0 .. `limit`.
Span clip(int start, unsigned length, int limit) {
  const int64_t first = std::max<int64_t>(start, 0);
  const int64_t end = std::min<int64_t>(int64_t{start} + length, limit);
  if (end <= first) return {};
  return {static_cast<unsigned>(first), static_cast<unsigned>(end - first)};
}

SharedArea sharedArea(const BitmapHandle& bitmap, int left, int top, unsigned width, unsigned height) {
  const Span columns = clip(left, width, bitmap.Width);
  const Span rows = clip(top, height, bitmap.Height);
  return {.sourceColumn = columns.start,
          .sourceRow = rows.start,
          .column = columns.start - static_cast<unsigned>(left),
          .row = rows.start - static_cast<unsigned>(top),
          .width = columns.length,
          .height = rows.length};
}

// --- Moving the pixels of a row

// A stretch of bits, from `from`, bit `fromBit`, to `to`, bit `toBit` (0 to 7, counted from the most significant).
struct BitMove {
  unsigned fromBit, toBit;
  size_t fromBytes, toBytes;    // bytes the stretch touches on either side
  uint8_t firstMask, lastMask;  // the bits of the stretch in the first and last byte touched in `to`
};

BitMove planMove(uint64_t fromBit, uint64_t toBit, uint64_t bits) {
  BitMove move{};
  move.fromBit = static_cast<unsigned>(fromBit % 8);
  move.toBit = static_cast<unsigned>(toBit % 8);
  move.fromBytes = static_cast<size_t>((move.fromBit + bits + 7) / 8);
  move.toBytes = static_cast<size_t>((move.toBit + bits + 7) / 8);
  const auto endBit = static_cast<unsigned>((move.toBit + bits) % 8);
  move.firstMask = static_cast<uint8_t>(0xFF >> move.toBit);
  move.lastMask = static_cast<uint8_t>(endBit == 0 ? 0xFF : 0xFF << (8 - endBit));
  return move;
}

uint32_t loadWord(const uint8_t* bytes) {
  uint32_t word;
  memcpy(&word, bytes, sizeof word);
  return word;
}

// Moves `count` bytes towards the first bit by `up` bits, 1 to 7, reading one byte more.
void shiftBytes(uint8_t* __restrict to, const uint8_t* __restrict from, size_t count, unsigned up) {
  constexpr uint32_t everyByte = 0x01010101;
  const unsigned down = 8 - up;
  const uint32_t highBits = (0xFFu << up & 0xFF) * everyByte;
  const size_t words = count / 4;
  // Four bytes at a time; what a shift brings over from a neighbouring byte is masked away.
  for (size_t k = 0; k < words; ++k) {
    const uint32_t word = (loadWord(from + 4 * k) << up & highBits) | (loadWord(from + 4 * k + 1) >> down & ~highBits);
    memcpy(to + 4 * k, &word, sizeof word);
  }
  for (size_t k = 4 * words; k < count; ++k) to[k] = static_cast<uint8_t>(from[k] << up | from[k + 1] >> down);
}

// Writes every byte touched; the bits beside the stretch in its first and last byte become zero.
void moveBits(uint8_t* to, const uint8_t* from, const BitMove& move) {
  uint8_t& first = to[0];
  uint8_t& last = to[move.toBytes - 1];
  if (move.fromBit == move.toBit) {
    memcpy(to, from, move.toBytes);
  } else {
    const unsigned up = (move.fromBit - move.toBit) & 7;
    size_t count = move.toBytes;
    if (move.toBit > move.fromBit) {
      // Towards the last bit: the first byte has no source byte before it.
      *to++ = static_cast<uint8_t>(from[0] >> (8 - up));
      --count;
    }
    // The last byte may have no source byte after it.
    const size_t whole = std::min(count, move.fromBytes - 1);
    shiftBytes(to, from, whole, up);
    if (whole < count) to[whole] = static_cast<uint8_t>(from[whole] << up);
  }
  first &= move.firstMask;
  last &= move.lastMask;
}

// --- Rectangles

// New section memory is zero and run-length rows are blank; other kinds of storage may start with anything.
bool startsBlank(const BitmapHandle& bitmap) {
  const StorageKind kind = storageKind(bitmap);
  return kind == StorageKind::section || kind == StorageKind::runLength;
}

// Copies the shared pixels into a fresh bitmap of the rectangle's size; what it has beyond them becomes zero.
int fillFromArea(BitmapHandle& target, BitmapHandle& source, const SharedArea& area) {
  const auto bits = static_cast<unsigned>(target.BitsPerPixel);
  const uint64_t fromBit = uint64_t{area.sourceColumn} * bits;
  const uint64_t toBit = uint64_t{area.column} * bits;
  const BitMove move = planMove(fromBit, toBit, uint64_t{area.width} * bits);
  const auto fromByte = static_cast<size_t>(fromBit / 8);
  const auto toByte = static_cast<size_t>(toBit / 8);

  RowPass pass(target, source);
  if (const int status = pass.open(); status != KSUCCESS) return status;

  const bool blank = startsBlank(target);
  const bool clearsRows = !blank || !hasDirectRows(target);
  const unsigned firstRow = blank ? area.row : 0;
  const unsigned endRow = blank ? area.row + area.height : static_cast<unsigned>(target.Height);
  for (unsigned row = firstRow; row < endRow; ++row) {
    uint8_t* pixels = pass.writer.row(row);
    if (clearsRows) memset(pixels, 0, target.BytesPerLine);
    if (row - area.row < area.height) {
      const uint8_t* sourcePixels = pass.reader.row(area.sourceRow + (row - area.row));
      if (sourcePixels == nullptr) return pass.reader.status();
      moveBits(pixels + toByte, sourcePixels + fromByte, move);
    }
    if (const int status = pass.writer.commit(row); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// A duplicate of the rectangle's size with the region moved along, its pixels not yet copied. On failure the caller
// frees what there is of it.
int duplicateForRect(BitmapHandle& work, BitmapHandle& source, int left, int top, unsigned width, unsigned height) {
  if (width > INT_MAX || height > INT_MAX) return KERR_NO_MEMORY;
  const int status = duplicateBitmap(work, source, static_cast<int>(width), static_cast<int>(height),
                                     source.BitsPerPixel, DUP_STORAGE | DUP_PALETTE);
  if (status != KSUCCESS) return status;
  // Moving by the negative of the lowest integer moves everything out, as one less does.
  const int rowOffset = -std::max(top, -INT_MAX);
  const int columnOffset = -std::max(left, -INT_MAX);
  return copyRegion(work, source, rowOffset, columnOffset);
}

// Leaves `work` without storage when the rectangle lies outside the bitmap; that is a success.
int copyRect(OwnedBitmap& work, BitmapHandle& source, int left, int top, unsigned width, unsigned height) {
  if (const int status = duplicateForRect(*work, source, left, top, width, height); status != KSUCCESS) return status;
  const SharedArea area = sharedArea(source, left, top, width, height);
  if (area.isEmpty()) {
    Zv_FreeBitmap(work.get());
    return KSUCCESS;
  }
  if (const int status = fillFromArea(*work, source, area); status != KSUCCESS) return status;
  Zv_TrimBitmapHeap(work.get());
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CopyBitmapRect(BitmapHandle* destination, BitmapHandle* source, int left, int top, unsigned width,
                                unsigned height) {
  if (!isAllocated(source)) return KERR_BAD_PARAMETER;
  const bool inPlace = destination == nullptr || destination == source;
  OwnedBitmap work;
  const int status = copyRect(work, *source, left, top, width, height);
  if (!inPlace) {
    if (status != KSUCCESS) Zv_FreeBitmap(work.get());
    *destination = work.release();
  } else if (status == KSUCCESS && isAllocated(work.get())) {
    work.moveInto(*source);
  }
  return status;
}

int ZAVO_CALL Zv_TrimBitmap(BitmapHandle* bitmap, int left, int top, unsigned width, unsigned height) {
  if (!isAllocated(bitmap)) return KERR_BAD_PARAMETER;
  const Span columns = clip(left, width, bitmap->Width);
  const Span rows = clip(top, height, bitmap->Height);
  return Zv_CopyBitmapRect(nullptr, bitmap, static_cast<int>(columns.start), static_cast<int>(rows.start),
                           columns.length, rows.length);
}
