// What a user sees of a bitmap: upright, in colours.
#pragma once

#include <zavo.h>

#include "support/test_bitmap.h"

namespace zavotest {

constexpr int allPerspectives[] = {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270};

// Stored values, row 0 at the top.
Picture seenValuesOf(BitmapHandle& bitmap);

// Colours 0xRRGGBB, row 0 at the top. 16-bit pixels have the low three bits of each channel zero.
Picture seenOf(BitmapHandle& bitmap);

// The pixels of the region as seen: 1 inside, 0 outside.
Picture seenRegionOf(BitmapHandle& bitmap);

// Makes an upright picture of these colours at a depth and perspective. Palettes begin with the colours of the
// picture, in the order they come up; the picture must not have more than fit.
void makeSeen(BitmapHandle& bitmap, const Picture& colors, int bits, int perspective, int memoryType = ALLOC_MEMORY);

}  // namespace zavotest
