// A palette chosen from the colours of one bitmap, or of all bitmaps of a list.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/memory.h"

namespace zavo {

// Fills `palette` with at most `count` colours that stand for those of the bitmap, sorted by red, green, blue; what is
// left of the `count` entries is zero. A bitmap that has no more than `count` palette entries gives its own palette,
// sorted.
//
// `inverseMap`, when not null, becomes a table of matchTableEntries entries: for every 15-bit key of a colour that
// occurs, the index of its palette entry plus 1, and 0 for every other. It stays empty when the bitmap gives its own
// palette.
//
// KSUCCESS; KERR_BAD_BITMAP for a null or unallocated bitmap; KERR_BAD_PARAMETER for a null palette or a count of 0;
// KERR_NO_MEMORY; the code of a failed read. On failure nothing is written.
[[nodiscard]] int optimisePalette(RGBQUAD* palette, unsigned count, OsBlock<uint32_t>* inverseMap,
                                  BitmapHandle* bitmap);

// As optimisePalette, over all bitmaps of a list; a list of one counts as that bitmap. KERR_BAD_BITMAP for an empty
// list or an item without pixels, KERR_BAD_PARAMETER for a null list too.
[[nodiscard]] int optimiseListPalette(RGBQUAD* palette, unsigned count, OsBlock<uint32_t>* inverseMap,
                                      BitmapListHandle list);

}  // namespace zavo
