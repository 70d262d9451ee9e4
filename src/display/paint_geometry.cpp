// Rectangles of a paint. Everything is brought to the picture as seen first, so that a picture comes out the same
// whichever way it is stored. Products are formed in 64 bits and cannot overflow.
#include "display/paint_geometry.h"

#include <utility>

#include "core/perspective.h"

namespace zavo {
namespace {

int divideUp(int64_t product, int64_t by) {
  return static_cast<int>((product + by - 1) / by);
}

// The destination pixels whose source pixel lies in the clip.
RECT mapClip(const RECT& clip, const RECT& source, const RECT& destination) {
  const int64_t w = int64_t{source.right} - source.left;
  const int64_t h = int64_t{source.bottom} - source.top;
  const int64_t width = int64_t{destination.right} - destination.left;
  const int64_t height = int64_t{destination.bottom} - destination.top;
  const auto column = [&](int x) { return destination.left + divideUp((int64_t{x} - source.left) * width, w); };
  const auto row = [&](int y) { return destination.bottom - divideUp((int64_t{source.bottom} - y) * height, h); };
  return {column(clip.left), row(clip.top), column(clip.right), row(clip.bottom)};
}

bool limit(RECT& rect, const RECT* to) {
  if (to == nullptr) return true;
  const RECT before = rect;
  return IntersectRect(&rect, &before, to) != FALSE;
}

bool fits(int64_t extent) {
  return extent > 0 && extent <= INT32_MAX;
}

}  // namespace

bool PaintGeometry::resolve(const BitmapHandle& bitmap, const PaintRequest& request) {
  const RECT all = {0, 0, bitmap.Width, bitmap.Height};
  source_ = request.source != nullptr ? *request.source : all;
  destination_ = *request.destination;
  if (destination_.top > destination_.bottom) std::swap(destination_.top, destination_.bottom);
  RECT clip = source_;
  if (!limit(clip, request.sourceClip) || !limit(clip, &all)) return false;
  if (!fits(int64_t{source_.right} - source_.left) || !fits(int64_t{source_.bottom} - source_.top)) return false;
  if (!fits(int64_t{destination_.right} - destination_.left) ||
      !fits(int64_t{destination_.bottom} - destination_.top)) {
    return false;
  }

  if (isRotated(bitmap.ViewPerspective)) {
    rectFromBitmap(bitmap, VIEW_UPRIGHT, source_);
    rectFromBitmap(bitmap, VIEW_UPRIGHT, clip);
  }
  if (request.storedRows != nullptr) {
    RECT rows = *request.storedRows;
    rectFromBitmap(bitmap, VIEW_UPRIGHT, rows);
    if (!limit(clip, &rows)) return false;
  }
  area_ = mapClip(clip, source_, destination_);
  return limit(area_, &destination_) && limit(area_, request.destinationClip);
}

bool PaintGeometry::isSameSize() const {
  return destinationWidth() == sourceWidth() && destinationHeight() == sourceHeight();
}

}  // namespace zavo
