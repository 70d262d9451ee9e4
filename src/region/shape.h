// Shapes: brought from the coordinates they are given in into a bitmap's stored coordinates, cut to what the bitmap can
// hold while they are built. So a shape of any size costs no more memory than the bitmap's own rows.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "region/region.h"

namespace zavo {

// Adds the offset, then multiplies by numerator / denominator, dividing towards zero. Row y fills the rows from y's
// scaled edge up to that of y + 1.
struct ShapeScale {
  int xNumerator;
  int xDenominator;
  int yNumerator;
  int yDenominator;
  int xOffset = 0;
  int yOffset = 0;
};

// The shape whose pixels are those of some rectangles, sorted by top and then left, all of one top having one bottom,
// with the bounding box `box`. Both functions leave `shape` null when nothing is left of the box after scaling; a shape
// that merely lies outside the bitmap is an empty region. KSUCCESS; KERR_BAD_PARAMETER for an unusable transform;
// KERR_NO_MEMORY.
[[nodiscard]] int shapeFromRects(OwnedRegion& shape, const BitmapHandle& bitmap, const RegionXForm* xform,
                                 const RECT& box, const RECT* rects, unsigned count);

// The shape of a region.
[[nodiscard]] int shapeFromRegion(OwnedRegion& shape, const BitmapHandle& bitmap, const RegionXForm* xform,
                                  const BitmapRegion& region);

// The region scaled and cut to `frame`; an empty region when nothing is left. KSUCCESS or KERR_NO_MEMORY.
[[nodiscard]] int scaleRuns(OwnedRegion& scaled, const BitmapRegion& region, const ShapeScale& scale,
                            const RECT& frame);

}  // namespace zavo
