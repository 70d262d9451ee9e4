// Duplicating bitmaps: the description under new dimensions, the pixels, or both.
//
// A palette or region that a duplicate shares belongs to the source: it is taken out of the duplicate before that is
// freed.
#include "core/duplicate.h"

#include <algorithm>
#include <cstring>

#include "core/memory.h"
#include "core/owners.h"
#include "core/region_services.h"
#include "core/rows.h"
#include "core/run_rows.h"
#include "core/status.h"

namespace zavo {
namespace {

constexpr unsigned inheritedFlag = 0x020;  // means nothing to this library
constexpr unsigned ownEverything = DUP_STORAGE | DUP_PALETTE | DUP_REGION;

// Fills in what depends on the source, in an order in which each step finds what it looks at: the playback colours
// are translated by storage flag and palette.
int attachToDuplicate(BitmapHandle& duplicate, BitmapHandle& source, unsigned flags) {
  if ((flags & DUP_STORAGE) != 0) {
    const int memoryType =
        isRunLength(source) && duplicate.BitsPerPixel == 1 ? ALLOC_RUNLENGTH | ALLOC_MEMORY : ALLOC_MEMORY;
    if (const int status = Zv_AllocateBitmap(&duplicate, memoryType); status != KSUCCESS) return status;
  }
  duplicate.Palette = source.Palette;
  if ((flags & DUP_PALETTE) != 0 && source.Palette != nullptr) {
    duplicate.Palette = Zv_DupPalette(source.Palette);
    if (duplicate.Palette == nullptr) return KERR_NO_MEMORY;
  }
  Zv_CopyPlaybackParms(&duplicate, &source);
  if ((flags & DUP_REGION) != 0) return copyRegion(duplicate, source, 0, 0);
  duplicate.Region = source.Region;
  return KSUCCESS;
}

// --- Pixels

// A row that is blank on either side stays without a heap block.
int copyRunRows(BitmapHandle& destination, const BitmapHandle& source, unsigned rows) {
  for (unsigned row = 0; row < rows; ++row) {
    const RunSpan runs = runRow(source, row);
    if (runs.empty() && runRow(destination, row).empty()) continue;
    if (const int status = putRunRow(destination, row, runs); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// Failures of a file are passed over, as callers expect of this copy; want of memory is not.
int copyPackedRows(BitmapHandle& destination, BitmapHandle& source, unsigned rows) {
  const unsigned bytes = std::min(destination.BytesPerLine, source.BytesPerLine);
  RowReader reader(source);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  for (unsigned row = 0; row < rows; ++row) {
    const uint8_t* pixels = reader.row(row);
    const int result = pixels != nullptr ? writeRow(destination, pixels, row, 0, bytes) : reader.status();
    if (result == KERR_NO_MEMORY) return result;
  }
  return KSUCCESS;
}

}  // namespace

int duplicateBitmap(BitmapHandle& destination, BitmapHandle& source, int width, int height, int bitsPerPixel,
                    unsigned flags) {
  // An unsupported depth leaves a record without pixels, which the allocation refuses.
  Zv_InitBitmap(&destination, width, height, bitsPerPixel);
  destination.Flags |= source.Flags & (BMF_RUNLENGTH | inheritedFlag);
  destination.ViewPerspective = source.ViewPerspective;
  destination.XResolution = source.XResolution;
  destination.YResolution = source.YResolution;
  destination.ColorOrder = source.ColorOrder;
  const int status = attachToDuplicate(destination, source, flags);
  if (status != KSUCCESS) discardDuplicate(destination, flags);
  return status;
}

int duplicateEmpty(BitmapHandle& made, BitmapHandle& source, int width, int height) {
  const unsigned flags = DUP_STORAGE | DUP_PALETTE;
  const int status = duplicateBitmap(made, source, width, height, source.BitsPerPixel, flags);
  made.Region = nullptr;
  made.DitheringMethod = source.DitheringMethod;
  made.Reserved1 = source.Reserved1;
  return status;
}

void discardDuplicate(BitmapHandle& duplicate, unsigned flags) {
  if ((flags & DUP_PALETTE) == 0) duplicate.Palette = nullptr;
  if ((flags & DUP_REGION) == 0) duplicate.Region = nullptr;
  Zv_FreeBitmap(&duplicate);
}

int copyBitmapData(BitmapHandle& destination, BitmapHandle& source) {
  const auto rows = static_cast<unsigned>(std::min(destination.Height, source.Height));
  if (isRunLength(destination) && isRunLength(source) && destination.Width == source.Width) {
    return copyRunRows(destination, source, rows);
  }
  BitmapLock destinationLock(destination);
  BitmapLock sourceLock(source);
  if (hasDirectRows(destination) && hasDirectRows(source) && destination.BytesPerLine == source.BytesPerLine) {
    memcpy(destination.Data, source.Data, size_t{rows} * source.BytesPerLine);
    return KSUCCESS;
  }
  return copyPackedRows(destination, source, rows);
}

int copyBitmap(BitmapHandle& destination, BitmapHandle& source) {
  int status = duplicateBitmap(destination, source, source.Width, source.Height, source.BitsPerPixel, ownEverything);
  if (status != KSUCCESS) return status;
  status = copyBitmapData(destination, source);
  if (status != KSUCCESS) {
    Zv_FreeBitmap(&destination);
    return status;
  }
  Zv_TrimBitmapHeap(&destination);
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_DupBitmapNewDim(BitmapHandle* destination, BitmapHandle* source, int width, int height,
                                 int bitsPerPixel, unsigned flags) {
  if (destination == nullptr || !isAllocated(source)) return KERR_BAD_BITMAP;
  if (destination == source) return KERR_BAD_PARAMETER;
  return duplicateBitmap(*destination, *source, width, height, bitsPerPixel, flags);
}

void ZAVO_CALL Zv_CopyBitmapHandle(BitmapHandle* destination, const BitmapHandle* source) {
  if (destination != nullptr && source != nullptr) *destination = *source;
}

int ZAVO_CALL Zv_CopyBitmapData(BitmapHandle* destination, BitmapHandle* source) {
  if (!isAllocated(source) || !isAllocated(destination)) return KERR_BAD_BITMAP;
  if (destination == source) return KSUCCESS;
  return copyBitmapData(*destination, *source);
}

int ZAVO_CALL Zv_CopyBitmap(BitmapHandle* destination, BitmapHandle* source) {
  if (destination == nullptr || !isAllocated(source)) return KERR_BAD_PARAMETER;
  if (destination == source) return KSUCCESS;
  return copyBitmap(*destination, *source);
}
