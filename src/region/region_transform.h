// Mirroring, turning and scaling regions, along with the pixels of their bitmaps or between the frames of view
// perspectives.
#pragma once

#include <zavo.h>

#include "core/perspective.h"
#include "region/region.h"

namespace zavo {

// Reverses the rows of the bitmap's region within the bitmap's height. Cannot fail.
void flipRegion(BitmapHandle& bitmap);

// Reverses the columns of the bitmap's region within the bitmap's width. Cannot fail.
void mirrorRegion(BitmapHandle& bitmap);

// Gives a bitmap that holds `source` turned clockwise by `quarters` (0 to 3) quarters the region of `source`, turned
// likewise. As copyRegion, what the field held is overwritten. KSUCCESS, or KERR_NO_MEMORY with Region null.
[[nodiscard]] int copyTurnedRegion(BitmapHandle& turned, const BitmapHandle& source, int quarters);

// Gives a bitmap that holds `source` scaled to another width and height the region of `source`, scaled likewise. As
// copyRegion, what the field held is overwritten. KSUCCESS, or KERR_NO_MEMORY with Region null.
[[nodiscard]] int copyScaledRegion(BitmapHandle& scaled, const BitmapHandle& source);

// A copy of a region of the frame `from`, in which the image has `size`, brought into the frame `to`, without the
// cached objects. KSUCCESS or KERR_NO_MEMORY.
[[nodiscard]] int copyInFrame(OwnedRegion& copy, const BitmapRegion& region, int from, int to, ImageSize size);

// The same in place, for a region without cached objects; it is as it was when memory is short.
[[nodiscard]] int convertRegion(OwnedRegion& region, int from, int to, ImageSize size);

}  // namespace zavo
