// Carrying a region through a geometric operation that is defined on pixels: the region becomes a 1-bit mask, the
// operation is done to the mask, and what comes out is the new region.
#pragma once

#include <zavo.h>

#include "core/owners.h"
#include "core/status.h"

namespace zavo {

// Makes a 1-bit image of the bitmap's size and perspective, with 1 for the pixels of its region, which it must have.
[[nodiscard]] int makeRegionMask(OwnedBitmap& mask, const BitmapHandle& bitmap);

// Gives `target`, which has no region, that of the pixels that are 1 in `mask`, even when there are none.
[[nodiscard]] int setRegionFromMask(BitmapHandle& target, BitmapHandle& mask);

// Gives `target` the region of `source`, transformed. `transform(result, mask)` must build in the OwnedBitmap `result`
// a 1-bit image of the target's size, with 0 for every pixel that no mask pixel comes to.
template <typename Transform>
[[nodiscard]] int carryRegionByMask(BitmapHandle& target, const BitmapHandle& source, Transform transform) {
  if (source.Region == nullptr) return KSUCCESS;
  OwnedBitmap mask, result;
  if (const int status = makeRegionMask(mask, source); status != KSUCCESS) return status;
  if (const int status = transform(result, *mask); status != KSUCCESS) return status;
  return setRegionFromMask(target, *result);
}

// The value of a mask pixel outside the region, as a fill colour.
constexpr COLORREF outsideMask = 0x01000000;

}  // namespace zavo
