// The painting driver behind the exported calls, printing and device-dependent bitmaps.
#pragma once

#include <zavo.h>

#include "display/paint_geometry.h"

namespace zavo {

// Paints an allocated bitmap, which is locked meanwhile. KSUCCESS, also when nothing is left to paint;
// KERR_NO_MEMORY; the code of a row that could not be read.
[[nodiscard]] int paintBitmap(HDC dc, BitmapHandle& bitmap, const PaintRequest& request, DWORD rop);

// Paints rows `first` to `first` + `count` - 1 of the bitmap's layout from `rows`; the bitmap's own storage is not
// read.
[[nodiscard]] int paintHeldRows(HDC dc, BitmapHandle& bitmap, const PaintRequest& request, DWORD rop,
                                const uint8_t* rows, int first, int count);

}  // namespace zavo
