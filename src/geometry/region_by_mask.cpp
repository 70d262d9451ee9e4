// Masks to regions.
#include "geometry/region_by_mask.h"

#include <utility>

#include "region/region_color.h"

namespace zavo {

int setRegionFromMask(BitmapHandle& target, BitmapHandle& mask) {
  constexpr COLORREF insideMask = 0x01000001;
  OwnedRegion region;
  if (const int status = makeColorRegion(region, mask, insideMask); status != KSUCCESS) return status;
  if (!region) {
    // No pixel is inside: the region is empty, which is not the same as none.
    if (const int status = makeRectRegion(region, RECT{}); status != KSUCCESS) return status;
  }
  attachRegion(target, std::move(region));
  return KSUCCESS;
}

}  // namespace zavo
