// The region object: the pixels of a bitmap that region-aware operations work on, as runs row by row.
//
// A row's runs are pairs of x values (start, end; end exclusive), sorted, neither overlapping nor touching, so the
// values of a row rise strictly. Rows outside the bounds are empty. An empty region has bounds of zeros and no arrays.
// Bounds are usually tight; those of a scaled region may be wider than what is left of its runs.
#pragma once

#include <zavo.h>

#include <cstddef>
#include <cstdint>

#include "core/owners.h"
#include "core/region_services.h"
#include "core/status.h"

namespace zavo {

struct RegionRow {
  uint32_t valueCount;  // twice the number of runs
  uint32_t offset;      // bytes from the start of the run data to the row's first value
};

}  // namespace zavo

struct BitmapRegion {
  HRGN displayRegion;      // cached: the region in display coordinates, or null
  RegionXForm displayKey;  // the transform it was made with
  HBITMAP outline;         // cached: the monochrome outline in display coordinates, or null
  RegionXForm outlineKey;  // the transform it was made with
  int cachedPerspective;   // the bitmap's perspective when the cached objects were made
  RECT bounds;             // rows top to bottom - 1 have an index entry; runs lie in left to right - 1
  uint32_t rowIndexBytes;  // of rows
  zavo::RegionRow* rows;   // row `bounds.top + i` is rows[i]
  uint32_t runBytes;       // of values
  int* values;             // run data
};

namespace zavo {

// The runs of one row.
struct Segments {
  const int* values;
  unsigned count;  // of values

  [[nodiscard]] const int* begin() const { return values; }
  [[nodiscard]] const int* end() const { return values + count; }
  [[nodiscard]] bool empty() const { return count == 0; }
};

// Frees the object with all it owns.
void destroyRegion(BitmapRegion* region);

struct RegionTraits {
  using Handle = BitmapRegion*;
  static Handle none() { return nullptr; }
  static void close(Handle region) { destroyRegion(region); }
};
using OwnedRegion = Owner<RegionTraits>;

[[nodiscard]] constexpr bool isEmptyRect(const RECT& rect) {
  return rect.left >= rect.right || rect.top >= rect.bottom;
}

// The common part; zeros when there is none.
[[nodiscard]] constexpr RECT intersection(const RECT& a, const RECT& b) {
  const RECT common = {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top,
                       a.right < b.right ? a.right : b.right, a.bottom < b.bottom ? a.bottom : b.bottom};
  return isEmptyRect(common) ? RECT{} : common;
}

[[nodiscard]] constexpr bool contains(const RECT& outer, const RECT& inner) {
  return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
         inner.bottom <= outer.bottom;
}

// (0, 0, Width, Height)
[[nodiscard]] inline RECT bitmapRect(const BitmapHandle& bitmap) {
  return {0, 0, bitmap.Width, bitmap.Height};
}

// Runs of a row; none for a row outside the bounds.
[[nodiscard]] inline Segments regionRow(const BitmapRegion& region, int row) {
  if (row < region.bounds.top || row >= region.bounds.bottom) return {nullptr, 0};
  const RegionRow& entry = region.rows[row - region.bounds.top];
  return {region.values + entry.offset / sizeof(int), entry.valueCount};
}

// Deletes the cached objects; every change of the region's shape or place does it.
void dropCaches(BitmapRegion& region);

// A copy moved down and right, without the cached objects, and cut to `clip`. A copy that lies inside keeps its bounds
// as they are.
[[nodiscard]] int copyMoved(OwnedRegion& copy, const BitmapRegion& region, int rowOffset, int columnOffset,
                            const RECT& clip);

// A region of one rectangle.
[[nodiscard]] int makeRectRegion(OwnedRegion& region, const RECT& rect);

// Frees the bitmap's region and puts another in its place.
void attachRegion(BitmapHandle& bitmap, OwnedRegion region);

}  // namespace zavo
