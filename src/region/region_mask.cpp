// Regions from the white pixels of masks.
#include <zavo.h>

#include <utility>

#include "core/owners.h"
#include "core/status.h"
#include "region/combine_shape.h"
#include "region/region_color.h"
#include "region/shape.h"

namespace zavo {
namespace {

constexpr COLORREF white = RGB(255, 255, 255);

// The white pixels of a mask, in the mask's own coordinates. Whether the mask is taken as it is depends on the palette
// of the bitmap that gets the region, not on the mask's; applications rely on it.
int makeMaskRegion(OwnedRegion& region, BitmapHandle& mask, const BitmapHandle& bitmap) {
  const int gray = Zv_IsGrayScaleBitmap(&bitmap);
  if (mask.BitsPerPixel == 1 && (gray == 1 || gray == 2)) return makeColorRegion(region, mask, white);
  OwnedBitmap reduced;
  const int status = Zv_ColorResBitmap(&mask, reduced.get(), 1, COLORRES_FIXED_PALETTE | COLORRES_NEAREST, nullptr, 0);
  return status == KSUCCESS ? makeColorRegion(region, *reduced, white) : status;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_SetBitmapRgnFromMask(BitmapHandle* bitmap, const RegionXForm* xform, BitmapHandle* mask,
                                      int combineMode) {
  if (bitmap == nullptr || !isAllocated(mask)) return KERR_BAD_PARAMETER;
  OwnedRegion region;
  if (const int status = makeMaskRegion(region, *mask, *bitmap); status != KSUCCESS) return status;
  static constexpr BitmapRegion none = {};
  OwnedRegion shape;
  const int status = shapeFromRegion(shape, *bitmap, xform, region ? *region.get() : none);
  return status == KSUCCESS ? combineShape(*bitmap, std::move(shape), combineMode) : status;
}
