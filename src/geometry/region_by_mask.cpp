// Regions to masks and back.
#include "geometry/region_by_mask.h"

#include <cstring>
#include <utility>

#include "core/memory.h"
#include "core/rows.h"
#include "region/combine_shape.h"
#include "region/region_color.h"

namespace zavo {

int makeRegionMask(OwnedBitmap& mask, const BitmapHandle& bitmap) {
  int status = Zv_InitBitmap(mask.get(), bitmap.Width, bitmap.Height, 1);
  if (status == KSUCCESS) status = Zv_AllocateBitmap(mask.get(), ALLOC_MEMORY);
  if (status != KSUCCESS) return status;
  mask->ViewPerspective = bitmap.ViewPerspective;
  auto ones = OsBlock<uint8_t>::allocate(mask->BytesPerLine);
  if (!ones) return KERR_NO_MEMORY;
  memset(ones.get(), 0xFF, mask->BytesPerLine);
  const BitmapLock lock(*mask);
  RowWriter writer(*mask);
  if (status = writer.open(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap.Height); ++y) {
    memset(writer.row(y), 0, mask->BytesPerLine);
    if (status = writer.commit(y); status != KSUCCESS) return status;
    const Segments runs = regionRow(*bitmap.Region, static_cast<int>(y));
    if (runs.empty()) continue;
    status = Zv_PutBitmapRowSegments(mask.get(), ones.get(), y, 0, reinterpret_cast<const unsigned*>(runs.values),
                                     runs.count, 0);
    if (status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// An empty shape never replaces a region. So the target gets an empty region first, which stays when no pixel of the
// mask is 1.
int setRegionFromMask(BitmapHandle& target, BitmapHandle& mask) {
  constexpr COLORREF insideMask = 0x01000001;  // the mask has no palette: its index says it
  OwnedRegion shape;
  if (const int status = makeColorRegion(shape, mask, insideMask); status != KSUCCESS) return status;
  const RECT all = {0, 0, target.Width, target.Height};
  if (const int status = Zv_SetBitmapRgnRect(&target, nullptr, &all, CombineAndNotBitmap); status != KSUCCESS) {
    return status;
  }
  return combineShape(target, std::move(shape), CombineSet);
}

}  // namespace zavo
