// A bitmap's region as a region of the graphics interface.
#pragma once

#include <zavo.h>

#include "region/display_transform.h"
#include "region/region.h"

namespace zavo {

// The graphics interface can take the coordinates.
[[nodiscard]] bool isDrawable(const RECT& rect);

// The two transforms differ in their offsets at most.
[[nodiscard]] bool isSameScale(const RegionXForm& a, const RegionXForm& b);

// Drops cached objects that were made when the bitmap had another perspective.
void refreshCaches(BitmapHandle& bitmap);

// The region (without one: the whole bitmap) on the display that `transform` describes. `callerOwns` says whether the
// handle is the caller's to delete or the region's own. KSUCCESS or KERR_NO_MEMORY.
[[nodiscard]] int displayRegion(HRGN& region, bool& callerOwns, BitmapHandle& bitmap,
                                const DisplayTransform& transform);

}  // namespace zavo
