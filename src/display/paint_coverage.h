// The painters of 1-bit images as grey levels: every destination pixel is as dark as the part of its source area that
// 0 bits cover.
#pragma once

#include <zavo.h>

#include "display/paint_bands.h"
#include "display/paint_geometry.h"

namespace zavo {

// Paints the lines of a 1-bit bitmap, which must be locked, as 8-bit grey; `inverted` for a palette that falls from
// white to black. Source areas are at least one pixel, so that enlarging and the same size come out too. KSUCCESS,
// KERR_NO_MEMORY or the code of a row that could not be read.
[[nodiscard]] int paintCoverage(BandPainter& bands, BitmapHandle& bitmap, const PaintGeometry& geometry, bool inverted);

}  // namespace zavo
