// What the core needs of a bitmap's region: core declares it here, src/region defines it, so that core includes no
// other folder.
#pragma once

#include <zavo.h>

namespace zavo {

// Sets the destination's Region to an own copy of the source's region, moved down by `rowOffset` and right by
// `columnOffset` and cut to the destination's Width and Height; null when the source has none. What the field held
// before is overwritten, not freed. KSUCCESS, or KERR_NO_MEMORY with Region null.
[[nodiscard]] int copyRegion(BitmapHandle& destination, const BitmapHandle& source, int rowOffset, int columnOffset);

// Frees the bitmap's region, if it has one, and clears the field.
void freeRegion(BitmapHandle& bitmap);

}  // namespace zavo
