// Questions about a bitmap's region: points, area, bounds, the segments of a row.
#include "region/region_queries.h"

#include <algorithm>
#include <cstring>

#include "region/display_transform.h"

namespace zavo {
namespace {

// The pixel is in the region, or in the bitmap when it has none.
bool isInClip(const BitmapHandle& bitmap, int row, int column) {
  if (bitmap.Region == nullptr) return row >= 0 && row < bitmap.Height && column >= 0 && column < bitmap.Width;
  const Segments segments = regionRow(*bitmap.Region, row);
  // The values rise, starts and ends in turn: an odd number of them up to the column leaves a run open.
  return ((std::upper_bound(segments.begin(), segments.end(), column) - segments.begin()) & 1) != 0;
}

// Most values that a row's segments can have.
unsigned maxClipSegments(const BitmapHandle& bitmap) {
  if (bitmap.Region == nullptr) return 2;
  const RECT& bounds = bitmap.Region->bounds;
  const int64_t most = (int64_t{bounds.right} - bounds.left + 1) & ~int64_t{1};
  return most < 1 ? 0 : static_cast<unsigned>(most);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_IsPtInBitmapRgn(const BitmapHandle* bitmap, int row, int column) {
  return bitmap != nullptr && isInClip(*bitmap, row, column) ? 1 : 0;
}

int ZAVO_CALL Zv_GetBitmapRgnArea(const BitmapHandle* bitmap, unsigned* area) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (area == nullptr) return KERR_BAD_PARAMETER;
  if (bitmap->Region == nullptr) {
    *area = static_cast<unsigned>(bitmap->Width) * static_cast<unsigned>(bitmap->Height);
    return KSUCCESS;
  }
  const BitmapRegion& region = *bitmap->Region;
  unsigned pixels = 0;
  for (unsigned i = 0; i + 1 < region.runBytes / sizeof(int); i += 2) {
    pixels += static_cast<unsigned>(region.values[i + 1] - region.values[i]);
  }
  *area = pixels;
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetBitmapRgnBounds(const BitmapHandle* bitmap, const RegionXForm* xform, RECT* bounds) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (bounds == nullptr) return KERR_BAD_PARAMETER;
  DisplayTransform transform;
  if (const int status = transform.open(*bitmap, xform); status != KSUCCESS) return status;
  *bounds = transform.displayRect(clipBounds(*bitmap));
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetBitmapClipSegmentsMax(const BitmapHandle* bitmap, unsigned* count) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (count == nullptr) return KERR_BAD_PARAMETER;
  *count = maxClipSegments(*bitmap);
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetBitmapClipSegments(const BitmapHandle* bitmap, int row, int* segments, unsigned* count) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (segments == nullptr || count == nullptr) return KERR_BAD_PARAMETER;
  const ClipSegments clip(*bitmap);
  const Segments found = clip.row(row);
  if (!found.empty()) memcpy(segments, found.values, found.count * sizeof(int));
  *count = found.count;
  return KSUCCESS;
}
