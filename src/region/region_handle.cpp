// Making system regions of a bitmap's region, and keeping the one made last. A system region of many parts is joined
// from halves of about equal size, because a join costs as much as the larger side.
#include "region/region_handle.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>

#include "core/owners.h"

namespace zavo {
namespace {

// Coordinates that the graphics interface takes on every system.
constexpr LONG systemCoordinateLimit = 1 << 27;

// Joins leaves in the order of a binary counter: two parts of n leaves each become one of 2 n.
class RegionJoiner {
 public:
  [[nodiscard]] bool add(RegionObject leaf) {
    parts_[depth_++] = std::move(leaf);
    ++leaves_;
    for (unsigned n = leaves_; n % 2 == 0; n /= 2) {
      if (!joinLast()) return false;
    }
    return true;
  }

  // The whole; an empty region when there were no leaves, null when the system refused one.
  [[nodiscard]] RegionObject finish() {
    if (depth_ == 0) return RegionObject(CreateRectRgn(0, 0, 0, 0));
    while (depth_ > 1) {
      if (!joinLast()) return {};
    }
    return std::move(parts_[0]);
  }

 private:
  bool joinLast() {
    --depth_;
    const HRGN left = parts_[depth_ - 1].get();
    const bool joined = CombineRgn(left, left, parts_[depth_].get(), RGN_OR) != ERROR;
    parts_[depth_].reset();
    return joined;
  }

  RegionObject parts_[sizeof(unsigned) * CHAR_BIT + 1];
  unsigned depth_ = 0;
  unsigned leaves_ = 0;
};

// Collects rectangles and makes system regions of so many at a time: the system's own way of adding rectangle after
// rectangle is quadratic, but for a few it is faster than a region for each.
class RegionFromRects {
 public:
  [[nodiscard]] bool add(const RECT& rect) {
    if (isEmptyRect(rect)) return true;
    leaf_.rects[leaf_.header.nCount++] = rect;
    return leaf_.header.nCount < leafRects || flush();
  }

  [[nodiscard]] RegionObject finish() { return flush() ? joiner_.finish() : RegionObject(); }

 private:
  static constexpr DWORD leafRects = 64;
  struct Leaf {
    RGNDATAHEADER header;
    RECT rects[leafRects];
  };
  static_assert(offsetof(Leaf, rects) == offsetof(RGNDATA, Buffer));

  bool flush() {
    RGNDATAHEADER& header = leaf_.header;
    if (header.nCount == 0) return true;
    RECT bound = leaf_.rects[0];
    for (const RECT& rect : std::span(leaf_.rects, header.nCount)) {
      bound = {std::min(bound.left, rect.left), std::min(bound.top, rect.top), std::max(bound.right, rect.right),
               std::max(bound.bottom, rect.bottom)};
    }
    const auto rectBytes = static_cast<DWORD>(header.nCount * sizeof(RECT));
    header = {sizeof(RGNDATAHEADER), RDH_RECTANGLES, header.nCount, rectBytes, bound};
    RegionObject leaf(ExtCreateRegion(nullptr, static_cast<DWORD>(sizeof(RGNDATAHEADER)) + rectBytes,
                                      reinterpret_cast<const RGNDATA*>(&leaf_)));
    header.nCount = 0;
    return leaf && joiner_.add(std::move(leaf));
  }

  RegionJoiner joiner_;
  Leaf leaf_ = {};
};

bool isSameRow(Segments a, Segments b) {
  return a.count == b.count && memcmp(a.values, b.values, a.count * sizeof(int)) == 0;
}

RegionObject buildDisplayRegion(const BitmapRegion& region, const DisplayTransform& transform) {
  OwnedRegion turned;
  const BitmapRegion* const source = transform.inFrame(turned, region);
  if (source == nullptr) return {};

  RegionFromRects parts;
  for (int y = source->bounds.top; y < source->bounds.bottom;) {
    const int top = y++;
    const Segments row = regionRow(*source, top);
    while (y < source->bounds.bottom && isSameRow(row, regionRow(*source, y))) ++y;
    for (unsigned i = 0; i < row.count; i += 2) {
      const RECT rect = {
          static_cast<LONG>(transform.displayX(row.values[i])), static_cast<LONG>(transform.displayY(top)),
          static_cast<LONG>(transform.displayX(row.values[i + 1])), static_cast<LONG>(transform.displayY(y))};
      if (!parts.add(rect)) return {};
    }
  }
  return parts.finish();
}

// Moves the cached region to the transform's offsets, if it is one of the same scale.
bool reuseCached(BitmapRegion& region, const RegionXForm& wanted) {
  RegionXForm& key = region.displayKey;
  if (region.displayRegion == nullptr || !isSameScale(key, wanted)) return false;
  const int64_t x = int64_t{wanted.XOffset} - key.XOffset;
  const int64_t y = int64_t{wanted.YOffset} - key.YOffset;
  if (x == 0 && y == 0) return true;
  if (std::max(std::abs(x), std::abs(y)) > 2 * int64_t{systemCoordinateLimit}) return false;
  if (OffsetRgn(region.displayRegion, static_cast<int>(x), static_cast<int>(y)) == ERROR) return false;
  key = wanted;
  return true;
}

}  // namespace

bool isDrawable(const RECT& rect) {
  return std::min({rect.left, rect.top, rect.right, rect.bottom}) >= -systemCoordinateLimit &&
         std::max({rect.left, rect.top, rect.right, rect.bottom}) <= systemCoordinateLimit;
}

bool isSameScale(const RegionXForm& a, const RegionXForm& b) {
  return a.ViewPerspective == b.ViewPerspective && a.XScaleNumerator == b.XScaleNumerator &&
         a.XScaleDenominator == b.XScaleDenominator && a.YScaleNumerator == b.YScaleNumerator &&
         a.YScaleDenominator == b.YScaleDenominator;
}

void refreshCaches(BitmapHandle& bitmap) {
  BitmapRegion& region = *bitmap.Region;
  if (region.cachedPerspective != bitmap.ViewPerspective) dropCaches(region);
  region.cachedPerspective = bitmap.ViewPerspective;
}

int displayRegion(HRGN& region, bool& callerOwns, BitmapHandle& bitmap, const DisplayTransform& transform) {
  if (bitmap.Region == nullptr) {
    const RECT rect = transform.displayRect(bitmapRect(bitmap));
    RegionObject whole(isDrawable(rect) ? CreateRectRgnIndirect(&rect) : nullptr);
    if (!whole) return KERR_NO_MEMORY;
    region = whole.release();
    callerOwns = true;
    return KSUCCESS;
  }

  refreshCaches(bitmap);
  BitmapRegion& source = *bitmap.Region;
  if (!isDrawable(transform.displayRect(source.bounds))) return KERR_NO_MEMORY;
  if (!reuseCached(source, transform.record())) {
    RegionObject built = buildDisplayRegion(source, transform);
    if (!built) return KERR_NO_MEMORY;
    if (source.displayRegion != nullptr) DeleteObject(source.displayRegion);
    source.displayRegion = built.release();
    source.displayKey = transform.record();
  }
  region = source.displayRegion;
  callerOwns = false;
  return KSUCCESS;
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_IntGetBitmapRgnHandle(BitmapHandle* bitmap, const RegionXForm* xform, HRGN* region, int* callerOwns) {
  if (region != nullptr) *region = nullptr;
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (region == nullptr || callerOwns == nullptr) return KERR_BAD_PARAMETER;
  *callerOwns = 0;
  DisplayTransform transform;
  if (const int status = transform.open(*bitmap, xform); status != KSUCCESS) return status;
  bool owns = false;
  const int status = displayRegion(*region, owns, *bitmap, transform);
  *callerOwns = owns ? 1 : 0;
  return status;
}

int ZAVO_CALL Zv_GetBitmapRgnHandle(BitmapHandle* bitmap, const RegionXForm* xform, HRGN* region) {
  if (region == nullptr) return KERR_BAD_PARAMETER;
  int callerOwns = 0;
  // Callers know 0 as the answer when there is no region to be had, whatever the reason.
  if (Zv_IntGetBitmapRgnHandle(bitmap, xform, region, &callerOwns) != KSUCCESS) return 0;
  if (callerOwns != 0) return KSUCCESS;

  RegionObject copy(CreateRectRgn(0, 0, 0, 0));
  if (!copy || CombineRgn(copy.get(), *region, nullptr, RGN_COPY) == ERROR) {
    *region = nullptr;
    return KERR_NO_MEMORY;
  }
  *region = copy.release();
  return KSUCCESS;
}
