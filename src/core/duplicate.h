// Duplicating a bitmap's description and its pixels.
#pragma once

#include <zavo.h>

namespace zavo {

// Zv_DupBitmapNewDim on checked, different handles.
[[nodiscard]] int duplicateBitmap(BitmapHandle& destination, BitmapHandle& source, int width, int height,
                                  int bitsPerPixel, unsigned flags);

// An empty image of other dimensions for an operation that builds its result aside: storage, own palette and all
// settings of the source, no region. `made` must be free to take it.
[[nodiscard]] int duplicateEmpty(BitmapHandle& made, BitmapHandle& source, int width, int height);

// Frees what a duplicate made with `flags` owns and takes out of it what it shares with its source.
void discardDuplicate(BitmapHandle& duplicate, unsigned flags);

// Zv_CopyBitmapData on checked, different handles.
[[nodiscard]] int copyBitmapData(BitmapHandle& destination, BitmapHandle& source);

// Zv_CopyBitmap on checked, different handles.
[[nodiscard]] int copyBitmap(BitmapHandle& destination, BitmapHandle& source);

}  // namespace zavo
