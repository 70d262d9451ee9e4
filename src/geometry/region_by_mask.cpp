// Regions to masks and back.
#include "geometry/region_by_mask.h"

#include <cstring>

#include "core/memory.h"
#include "region/region.h"

namespace zavo {

int makeRegionMask(OwnedBitmap& mask, const BitmapHandle& bitmap) {
  if (const int status = Zv_CreateBitmap(mask.get(), ALLOC_MEMORY, bitmap.Width, bitmap.Height, 1, ORDER_RED_FIRST,
                                         nullptr, bitmap.ViewPerspective);
      status != KSUCCESS) {
    return status;
  }
  auto ones = OsBlock<uint8_t>::allocate(mask->BytesPerLine);
  if (!ones) return KERR_NO_MEMORY;
  memset(ones.get(), 0xFF, mask->BytesPerLine);
  const BitmapLock lock(*mask);
  for (int y = 0; y < bitmap.Height; ++y) {
    const Segments runs = regionRow(*bitmap.Region, y);
    if (runs.empty()) continue;
    const int status = Zv_PutBitmapRowSegments(mask.get(), ones.get(), static_cast<unsigned>(y), 0,
                                               reinterpret_cast<const unsigned*>(runs.values), runs.count, 0);
    if (status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// An empty shape never replaces a region. So the target gets an empty region first, which stays when no pixel of the
// mask is 1.
int setRegionFromMask(BitmapHandle& target, BitmapHandle& mask) {
  const RECT all = {0, 0, target.Width, target.Height};
  if (const int status = Zv_SetBitmapRgnRect(&target, nullptr, &all, CombineAndNotBitmap); status != KSUCCESS) {
    return status;
  }
  return Zv_SetBitmapRgnFromMask(&target, nullptr, &mask, CombineSet);
}

}  // namespace zavo
