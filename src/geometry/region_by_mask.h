// Carrying a region through a geometric operation that is defined on pixels: the region becomes a 1-bit mask, the
// operation is done to the mask, and what comes out is the new region.
#pragma once

#include <zavo.h>

#include "core/owners.h"
#include "core/progress.h"
#include "core/status.h"
#include "region/region_mask.h"

namespace zavo {

// Gives `target`, which has no region, that of the pixels that are 1 in `mask`, even when there are none.
[[nodiscard]] int setRegionFromMask(BitmapHandle& target, BitmapHandle& mask);

// Gives `target` the region of `source`, transformed, without reports of progress. `transform(result, mask)` must build
// in the OwnedBitmap `result` a 1-bit image of the target's size, with 0 for every pixel that no mask pixel comes to.
template <typename Transform>
[[nodiscard]] int carryRegionByMask(BitmapHandle& target, const BitmapHandle& source, Transform transform) {
  if (source.Region == nullptr) return KSUCCESS;
  const SilentProgress silent;
  OwnedBitmap mask, result;
  if (const int status = makeRegionMask(mask, source); status != KSUCCESS) return status;
  if (const int status = transform(result, *mask); status != KSUCCESS) return status;
  return setRegionFromMask(target, *result);
}

// The value of a mask pixel outside the region, as a fill colour.
constexpr COLORREF outsideMask = 0x01000000;

}  // namespace zavo
