// Converted copies of bitmaps at another depth or with another palette, of one bitmap or of a whole list. The new image
// is built aside and moved in when all has gone well.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

#include "color/palettes.h"
#include "color/reduction_rows.h"
#include "color/reduction_target.h"
#include "core/bitmap_list.h"
#include "core/duplicate.h"
#include "core/memory.h"
#include "core/owners.h"
#include "core/progress.h"
#include "core/row_pass.h"
#include "core/status.h"

namespace zavo {
namespace {

// Gives the work bitmap the target's format and all of the source but its pixels.
int describe(OwnedBitmap& work, BitmapHandle& source, const ReductionTarget& target) {
  const int status =
      duplicateBitmap(*work, source, source.Width, source.Height, target.bitsPerPixel, DUP_STORAGE | DUP_REGION);
  if (status != KSUCCESS) return status;
  work->Palette = nullptr;
  work->ColorOrder = target.colorOrder;
  work->DitheringMethod = source.DitheringMethod;
  work->Reserved1 = source.Reserved1;
  if (target.bitsPerPixel <= 8) {
    work->Palette = createPalette(target.palette, work->ColorCount);
    if (work->Palette == nullptr) return KERR_NO_MEMORY;
  }
  // Once more, for colours of frames are translated by the palette.
  Zv_CopyPlaybackParms(work.get(), &source);
  return KSUCCESS;
}

int convertRows(BitmapHandle& work, BitmapHandle& source, const ReductionTarget& target, int method,
                Progress& progress) {
  ReductionRows rows;
  if (const int status = rows.prepare(source, target, method); status != KSUCCESS) return status;
  RowPass pass(work, source);
  if (const int status = pass.open(); status != KSUCCESS) return status;
  for (unsigned row = 0; row < static_cast<unsigned>(source.Height); ++row) {
    const uint8_t* pixels = pass.reader.row(row);
    if (pixels == nullptr) return pass.reader.status();
    uint8_t* converted = pass.writer.row(row);
    memset(converted + work.BytesPerLine - 4, 0, 4);  // the padding
    rows.convert(converted, pixels);
    if (const int status = pass.writer.commit(row); status != KSUCCESS) return status;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

int reduce(OwnedBitmap& work, BitmapHandle& source, const ReductionTarget& target, unsigned options,
           Progress& progress) {
  if (const int status = describe(work, source, target); status != KSUCCESS) return status;
  const bool dithers = (options & COLORRES_NEAREST) == 0 && isDitheringMethod(source.DitheringMethod);
  const int method = dithers ? source.DitheringMethod : 0;
  if (const int status = convertRows(*work, source, target, method, progress); status != KSUCCESS) return status;
  Zv_TrimBitmapHeap(work.get());
  return KSUCCESS;
}

// --- Lists

// The reduced items of a list while not all are made; freed unless they are moved into the list.
class ReducedItems {
 public:
  explicit ReducedItems(BitmapList& list) : list_(list), items_(OsBlock<BitmapHandle>::allocateZeroed(list.count)) {}
  ReducedItems(const ReducedItems&) = delete;
  ReducedItems& operator=(const ReducedItems&) = delete;
  ~ReducedItems() {
    for (unsigned i = 0; i < made_; ++i) Zv_FreeBitmap(&items_[i]);
  }

  explicit operator bool() const { return static_cast<bool>(items_); }
  void add(OwnedBitmap& work) { items_[made_++] = work.release(); }
  void moveIntoList() {
    for (unsigned i = 0; i < made_; ++i) {
      OwnedBitmap work(std::exchange(items_[i], BitmapHandle{}));
      work.moveInto(list_.items[i]);
    }
  }

 private:
  BitmapList& list_;
  OsBlock<BitmapHandle> items_;
  unsigned made_ = 0;
};

// Rows of all items; those of a list too long to count are cut, which makes the last reports come early.
int totalRows(const BitmapList& list) {
  int64_t rows = 0;
  for (unsigned i = 0; i < list.count; ++i) rows += list.items[i].Height;
  return static_cast<int>(std::min<int64_t>(rows, INT_MAX));
}

int reduceItems(ReducedItems& reduced, BitmapListHandle handle, BitmapList& list, const ReductionRequest& request) {
  Progress progress(totalRows(list));
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  BitmapHandle* const end = list.items + list.count;
  ReductionTarget shared;
  if (std::any_of(list.items, end, [&](const BitmapHandle& item) { return needsOptimised(request, item); })) {
    if (const int status = chooseSharedTarget(shared, request, handle); status != KSUCCESS) return status;
  }
  for (BitmapHandle* item = list.items; item < end; ++item) {
    ReductionTarget own;
    const bool sharing = needsOptimised(request, *item);
    if (!sharing) {
      if (const int status = chooseTarget(own, request, *item); status != KSUCCESS) return status;
    }
    OwnedBitmap work;
    const int status = reduce(work, *item, sharing ? shared : own, request.options, progress);
    if (status != KSUCCESS) return status;
    reduced.add(work);
  }
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ColorResBitmap(BitmapHandle* source, BitmapHandle* destination, int bitsPerPixel, unsigned options,
                                const RGBQUAD* palette, unsigned colorCount) {
  if (!isAllocated(source)) return KERR_BAD_BITMAP;
  const ReductionRequest request = {bitsPerPixel, options, palette, colorCount};
  if (const int status = checkReduction(request); status != KSUCCESS) return status;

  Progress progress(source->Height);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  ReductionTarget target;
  if (const int status = chooseTarget(target, request, *source); status != KSUCCESS) return status;
  OwnedBitmap work;
  if (const int status = reduce(work, *source, target, options, progress); status != KSUCCESS) return status;
  if (destination == nullptr || destination == source) {
    work.moveInto(*source);
  } else {
    *destination = work.release();
  }
  return KSUCCESS;
}

int ZAVO_CALL Zv_ColorResBitmapList(BitmapListHandle list, int bitsPerPixel, unsigned options, const RGBQUAD* palette,
                                    unsigned colorCount) {
  BitmapList* header = bitmapList(list);
  if (header == nullptr) return KERR_BAD_PARAMETER;
  for (unsigned i = 0; i < header->count; ++i) {
    if (!isAllocated(&header->items[i])) return KERR_BAD_BITMAP;
  }
  const ReductionRequest request = {bitsPerPixel, options, palette, colorCount};
  if (const int status = checkReduction(request); status != KSUCCESS) return status;

  ReducedItems reduced(*header);
  if (!reduced) return KERR_NO_MEMORY;
  if (const int status = reduceItems(reduced, list, *header, request); status != KSUCCESS) return status;
  reduced.moveIntoList();
  return KSUCCESS;
}
