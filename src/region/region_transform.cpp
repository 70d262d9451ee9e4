// Mirroring and turning regions. Half turns and mirrorings happen in place; a quarter turn makes new run lists.
#include "region/region_transform.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "region/region_turn.h"
#include "region/shape.h"

namespace zavo {
namespace {

// Rows keep their run data: only the index is reversed.
void reverseRows(BitmapRegion& region, int height) {
  if (isEmptyRect(region.bounds)) return;
  std::reverse(region.rows, region.rows + region.rowIndexBytes / sizeof(RegionRow));
  const RECT bounds = region.bounds;
  region.bounds.top = height - bounds.bottom;
  region.bounds.bottom = height - bounds.top;
}

void reverseColumns(BitmapRegion& region, int width) {
  if (isEmptyRect(region.bounds)) return;
  const size_t rowCount = region.rowIndexBytes / sizeof(RegionRow);
  for (size_t i = 0; i < rowCount; ++i) {
    int* const first = region.values + region.rows[i].offset / sizeof(int);
    int* const last = first + region.rows[i].valueCount;
    std::reverse(first, last);
    for (int* value = first; value != last; ++value) *value = width - *value;
  }
  const RECT bounds = region.bounds;
  region.bounds.left = width - bounds.right;
  region.bounds.right = width - bounds.left;
}

// Carries a region along in place; it is as it was when memory is short.
int carry(OwnedRegion& region, Passage way, ImageSize size) {
  BitmapRegion& runs = *region.get();
  if (way.flip) reverseRows(runs, size.height);
  if (way.angle == 180) {
    reverseRows(runs, size.height);
    reverseColumns(runs, size.width);
  } else if (way.angle != 0) {
    OwnedRegion turned;
    if (const int status = turnRuns(turned, runs, way.angle == 90, size); status != KSUCCESS) {
      if (way.flip) reverseRows(runs, size.height);
      return status;
    }
    region = std::move(turned);
  }
  return KSUCCESS;
}

int carryCopy(OwnedRegion& copy, const BitmapRegion& region, Passage way, ImageSize size) {
  if (!way.flip && way.angle % 180 != 0) return turnRuns(copy, region, way.angle == 90, size);
  OwnedRegion made;
  if (const int status = copyMoved(made, region, 0, 0, region.bounds); status != KSUCCESS) return status;
  const int status = carry(made, way, size);
  if (status == KSUCCESS) copy = std::move(made);
  return status;
}

}  // namespace

int convertRegion(OwnedRegion& region, int from, int to, ImageSize size) {
  return carry(region, passage(from, to), size);
}

int copyInFrame(OwnedRegion& copy, const BitmapRegion& region, int from, int to, ImageSize size) {
  return carryCopy(copy, region, passage(from, to), size);
}

void flipRegion(BitmapHandle& bitmap) {
  if (bitmap.Region == nullptr) return;
  dropCaches(*bitmap.Region);
  reverseRows(*bitmap.Region, bitmap.Height);
}

void mirrorRegion(BitmapHandle& bitmap) {
  if (bitmap.Region == nullptr) return;
  dropCaches(*bitmap.Region);
  reverseColumns(*bitmap.Region, bitmap.Width);
}

int copyTurnedRegion(BitmapHandle& turned, const BitmapHandle& source, int quarters) {
  const BitmapRegion* const region = source.Region;
  turned.Region = nullptr;
  if (region == nullptr) return KSUCCESS;

  OwnedRegion copy;
  const int status = carryCopy(copy, *region, {false, quarters * 90}, {source.Width, source.Height});
  turned.Region = copy.release();
  return status;
}

int copyScaledRegion(BitmapHandle& scaled, const BitmapHandle& source) {
  const BitmapRegion* const region = source.Region;
  scaled.Region = nullptr;
  if (region == nullptr) return KSUCCESS;
  OwnedRegion copy;
  const ShapeScale scale = {scaled.Width, source.Width, scaled.Height, source.Height};
  const int status = scaleRuns(copy, *region, scale, bitmapRect(scaled));
  scaled.Region = copy.release();
  return status;
}

}  // namespace zavo
