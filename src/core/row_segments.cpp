// Writing the listed pieces of a row and keeping what lies between them, down to single bits.
#include <zavo.h>

#include <algorithm>
#include <cstring>

#include "core/packed_pixels.h"
#include "core/rows.h"
#include "core/run_rows.h"
#include "core/status.h"

namespace zavo {
namespace {

// Merges source pixels into stored ones. Places and lengths are in bits, always those of whole pixels.
using MergeFunction = void (*)(uint8_t* target, uint64_t targetBit, const uint8_t* source, uint64_t sourceBit,
                               uint64_t count);

// Merging whole pixels of 16 or 32 bits, of which the bits of `kept` stay as they are stored.
template <typename Pixel, Pixel kept>
void mergeBelowAlpha(uint8_t* target, uint64_t targetBit, const uint8_t* source, uint64_t sourceBit, uint64_t count) {
  constexpr size_t bytes = sizeof(Pixel);
  target += targetBit / 8;
  source += sourceBit / 8;
  const auto pixels = static_cast<size_t>(count / 8 / bytes);
  for (size_t i = 0; i < pixels; ++i) {
    Pixel stored, pixel;
    memcpy(&stored, target + bytes * i, bytes);
    memcpy(&pixel, source + bytes * i, bytes);
    pixel = static_cast<Pixel>((pixel & ~kept) | (stored & kept));
    memcpy(target + bytes * i, &pixel, bytes);
  }
}

// A segment as bits of a row.
struct Stretch {
  uint64_t target;
  uint64_t source;
  uint64_t count;
};

// How the pixels of one call are written.
struct Merger {
  Merger(int bitsPerPixel, bool keepAlpha) : bits(static_cast<unsigned>(bitsPerPixel)) {
    if (!keepAlpha) return;
    if (bits == 16) merge = mergeBelowAlpha<uint16_t, 0x8000>;
    if (bits == 32) merge = mergeBelowAlpha<uint32_t, 0xFF000000>;
    readsWholePixels = merge != copyBits;
  }

  [[nodiscard]] Stretch stretch(unsigned start, unsigned end, unsigned columnOffset) const {
    return {uint64_t{start + columnOffset} * bits, uint64_t{start} * bits, uint64_t{end - start} * bits};
  }

  unsigned bits;
  MergeFunction merge = copyBits;
  bool readsWholePixels = false;  // stored pixels are needed, not only the bytes that pixels share
};

// --- Temporary files

int readAt(uint8_t* bytes, const BitmapHandle& bitmap, unsigned position, unsigned count) {
  return transferStatus(readFile(bytes, bitmap, position, count), count, KERR_READ);
}

int writeAt(const BitmapHandle& bitmap, unsigned position, const uint8_t* bytes, unsigned count) {
  return transferStatus(writeFile(bitmap, position, bytes, count), count, KERR_WRITE);
}

// Merges a stretch into a row that begins at `position` of the file, by chunks. Stored bytes are read only where some
// of their bits are kept.
int mergeIntoFile(const BitmapHandle& bitmap, unsigned position, const uint8_t* source, const Stretch& stretch,
                  const Merger& merger) {
  constexpr unsigned chunkBytes = 4096;  // whole pixels of 16 and 32 bits
  alignas(4) uint8_t chunk[chunkBytes];
  const uint64_t endBit = stretch.target + stretch.count;
  const auto endByte = static_cast<unsigned>((endBit + 7) / 8);
  uint64_t bit = stretch.target;
  while (bit < endBit) {
    const auto first = static_cast<unsigned>(bit / 8);
    const unsigned count = std::min(chunkBytes, endByte - first);
    const uint64_t chunkEnd = std::min(endBit, (uint64_t{first} + count) * 8);
    const bool sharesFirst = bit % 8 != 0;
    const bool sharesLast = chunkEnd % 8 != 0;
    int status = KSUCCESS;
    if (merger.readsWholePixels) {
      status = readAt(chunk, bitmap, position + first, count);
    } else {
      if (sharesFirst) status = readAt(chunk, bitmap, position + first, 1);
      if (status == KSUCCESS && sharesLast && !(sharesFirst && count == 1)) {
        status = readAt(chunk + count - 1, bitmap, position + first + count - 1, 1);
      }
    }
    if (status != KSUCCESS) return status;
    merger.merge(chunk, bit % 8, source, stretch.source + (bit - stretch.target), chunkEnd - bit);
    if (status = writeAt(bitmap, position + first, chunk, count); status != KSUCCESS) return status;
    bit = chunkEnd;
  }
  return KSUCCESS;
}

}  // namespace

int writeRowSegments(BitmapHandle& bitmap, const uint8_t* buffer, unsigned row, unsigned columnOffset,
                     const unsigned* segments, unsigned count, bool keepAlpha) {
  if (isRunLength(bitmap)) return putRunRowSegments(bitmap, buffer, row, columnOffset, segments, count);
  if (count < 2) return KSUCCESS;
  const bool direct = hasDirectRows(bitmap);
  if (!direct && (bitmap.Flags & BMF_DISK) == 0) return KERR_NO_MEMORY;
  const Merger merger(bitmap.BitsPerPixel, keepAlpha);
  const unsigned position = locateRow(bitmap, row);
  for (unsigned i = 0; i + 1 < count; i += 2) {
    if (segments[i] >= segments[i + 1]) continue;
    const Stretch stretch = merger.stretch(segments[i], segments[i + 1], columnOffset);
    if (direct) {
      merger.merge(bitmap.Data + position, stretch.target, buffer, stretch.source, stretch.count);
    } else if (const int status = mergeIntoFile(bitmap, position, buffer, stretch, merger); status != KSUCCESS) {
      return status;
    }
  }
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_PutBitmapRowSegments(BitmapHandle* bitmap, const unsigned char* buffer, unsigned row,
                                      unsigned columnOffset, const unsigned* segments, unsigned count, int keepAlpha) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (count > 1 && (buffer == nullptr || segments == nullptr)) return KERR_BAD_PARAMETER;
  return writeRowSegments(*bitmap, buffer, row, columnOffset, segments, count, keepAlpha != 0);
}
