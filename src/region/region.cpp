// The life of a region object: making, copying, attaching to a bitmap, freeing.
#include "region/region.h"

#include <cstring>
#include <utility>

#include "region/region_builder.h"
#include "region/run_operations.h"

namespace zavo {
namespace {

#ifndef _WIN64
static_assert(sizeof(RegionXForm) == 7 * 4, "the transform is 7 words");
static_assert(sizeof(BitmapRegion) == 25 * 4, "the region object is 25 words");
static_assert(sizeof(RegionRow) == 8, "row index entries are 8 bytes");
#endif

RECT moved(const RECT& rect, int rowOffset, int columnOffset) {
  return {rect.left + columnOffset, rect.top + rowOffset, rect.right + columnOffset, rect.bottom + rowOffset};
}

// The moved rectangle lies in `clip`, found without overflow.
bool fitsMoved(const RECT& rect, int rowOffset, int columnOffset, const RECT& clip) {
  return int64_t{rect.left} + columnOffset >= clip.left && int64_t{rect.right} + columnOffset <= clip.right &&
         int64_t{rect.top} + rowOffset >= clip.top && int64_t{rect.bottom} + rowOffset <= clip.bottom;
}

// A copy of a region that stays inside: the arrays are taken over as they are.
int copyWhole(OwnedRegion& copy, const BitmapRegion& region, int rowOffset, int columnOffset) {
  OsBlock<BitmapRegion> object = OsBlock<BitmapRegion>::allocateZeroed(1);
  if (!object) return KERR_NO_MEMORY;
  OwnedRegion made(object.release());

  const RECT& bounds = region.bounds;
  if (isEmptyRect(bounds)) {
    copy = std::move(made);
    return KSUCCESS;
  }
  OsBlock<RegionRow> rows = OsBlock<RegionRow>::allocate(region.rowIndexBytes / sizeof(RegionRow));
  if (!rows) return KERR_NO_MEMORY;
  memcpy(rows.get(), region.rows, region.rowIndexBytes);

  const unsigned valueCount = region.runBytes / sizeof(int);
  if (valueCount != 0) {
    OsBlock<int> values = OsBlock<int>::allocate(valueCount);
    if (!values) return KERR_NO_MEMORY;
    for (unsigned i = 0; i < valueCount; ++i) values[i] = region.values[i] + columnOffset;
    made.get()->values = values.release();
    made.get()->runBytes = region.runBytes;
  }
  made.get()->rows = rows.release();
  made.get()->rowIndexBytes = region.rowIndexBytes;
  made.get()->bounds = moved(bounds, rowOffset, columnOffset);
  copy = std::move(made);
  return KSUCCESS;
}

}  // namespace

void dropCaches(BitmapRegion& region) {
  if (region.displayRegion != nullptr) DeleteObject(region.displayRegion);
  if (region.outline != nullptr) DeleteObject(region.outline);
  region.displayRegion = nullptr;
  region.outline = nullptr;
}

void destroyRegion(BitmapRegion* region) {
  dropCaches(*region);
  Zv_OsFree(region->rows);
  Zv_OsFree(region->values);
  Zv_OsFree(region);
}

int copyMoved(OwnedRegion& copy, const BitmapRegion& region, int rowOffset, int columnOffset, const RECT& clip) {
  if (isEmptyRect(region.bounds) || fitsMoved(region.bounds, rowOffset, columnOffset, clip)) {
    return copyWhole(copy, region, rowOffset, columnOffset);
  }
  // Cut first, where nothing can overflow; what is left fits when moved.
  const auto edge = [](LONG value, int offset) {
    const int64_t position = int64_t{value} - offset;
    return static_cast<LONG>(position < LONG_MIN ? LONG_MIN : position > LONG_MAX ? LONG_MAX : position);
  };
  const RECT window = {edge(clip.left, columnOffset), edge(clip.top, rowOffset), edge(clip.right, columnOffset),
                       edge(clip.bottom, rowOffset)};
  OwnedRegion cut;
  if (const int status = combineRuns(cut, &region, nullptr, RunOperation::first, window); status != KSUCCESS) {
    return status;
  }
  BitmapRegion& kept = *cut.get();
  for (unsigned i = 0; i < kept.runBytes / sizeof(int); ++i) kept.values[i] += columnOffset;
  if (!isEmptyRect(kept.bounds)) kept.bounds = moved(kept.bounds, rowOffset, columnOffset);
  copy = std::move(cut);
  return KSUCCESS;
}

int makeRectRegion(OwnedRegion& region, const RECT& rect) {
  RegionBuilder builder;
  if (const int status = builder.start(rect); status != KSUCCESS) return status;
  for (int y = rect.top; y < rect.bottom; ++y) {
    builder.addRun(rect.left, rect.right);
    if (const int status = builder.endRow(y); status != KSUCCESS) return status;
  }
  return builder.finish(region);
}

void attachRegion(BitmapHandle& bitmap, OwnedRegion region) {
  freeRegion(bitmap);
  bitmap.Region = region.release();
}

int copyRegion(BitmapHandle& destination, const BitmapHandle& source, int rowOffset, int columnOffset) {
  // The field may hold the source's own region after a word-for-word copy of the record.
  const BitmapRegion* const region = source.Region;
  destination.Region = nullptr;
  if (region == nullptr) return KSUCCESS;
  OwnedRegion copy;
  const int status = copyMoved(copy, *region, rowOffset, columnOffset, bitmapRect(destination));
  destination.Region = copy.release();
  return status;
}

void freeRegion(BitmapHandle& bitmap) {
  if (bitmap.Region == nullptr) return;
  destroyRegion(bitmap.Region);
  bitmap.Region = nullptr;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_BitmapHasRgn(const BitmapHandle* bitmap) {
  return bitmap != nullptr && bitmap->Region != nullptr ? 1 : 0;
}

int ZAVO_CALL Zv_FreeBitmapRgn(BitmapHandle* bitmap) {
  if (bitmap == nullptr) return KERR_BAD_PARAMETER;
  freeRegion(*bitmap);
  return KSUCCESS;
}

int ZAVO_CALL Zv_OffsetBitmapRgn(BitmapHandle* bitmap, int rowOffset, int columnOffset) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  OwnedRegion whole;
  const BitmapRegion* region = bitmap->Region;
  if (region == nullptr) {
    if (const int status = makeRectRegion(whole, bitmapRect(*bitmap)); status != KSUCCESS) return status;
    region = whole.get();
  }
  OwnedRegion copy;
  const int status = copyMoved(copy, *region, rowOffset, columnOffset, bitmapRect(*bitmap));
  if (status != KSUCCESS) return status;
  attachRegion(*bitmap, std::move(copy));
  return KSUCCESS;
}
