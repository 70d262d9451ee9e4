// Regions from the white pixels of masks, and masks of regions.
#include "region/region_mask.h"

#include <cstring>
#include <utility>

#include "core/rows.h"
#include "core/status.h"
#include "region/combine_shape.h"
#include "region/region_color.h"
#include "region/shape.h"

namespace zavo {
namespace {

constexpr COLORREF white = RGB(255, 255, 255);
constexpr COLORREF maskIndex = 0x01000001;  // palette index 1

// The white pixels of a mask, in the mask's own coordinates. Whether the mask is taken as it is depends on the palette
// of the bitmap that gets the region, not on the mask's; applications rely on it.
int makeMaskRegion(OwnedRegion& region, BitmapHandle& mask, const BitmapHandle& bitmap) {
  const int gray = Zv_IsGrayScaleBitmap(&bitmap);
  if (mask.BitsPerPixel == 1 && (gray == 1 || gray == 2)) return makeColorRegion(region, mask, white);
  OwnedBitmap reduced;
  const int status = Zv_ColorResBitmap(&mask, reduced.get(), 1, COLORRES_FIXED_PALETTE | COLORRES_NEAREST, nullptr, 0);
  return status == KSUCCESS ? makeColorRegion(region, *reduced, white) : status;
}

// Not every kind of storage begins as zeros.
int clearRows(BitmapHandle& bitmap) {
  const BitmapLock lock(bitmap);
  RowWriter writer(bitmap);
  if (const int status = writer.open(); status != KSUCCESS) return status;
  for (unsigned row = 0; row < static_cast<unsigned>(bitmap.Height); ++row) {
    memset(writer.row(row), 0, bitmap.BytesPerLine);
    if (const int status = writer.commit(row); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace

int makeRegionMask(OwnedBitmap& mask, const BitmapHandle& bitmap) {
  int status = Zv_InitBitmap(mask.get(), bitmap.Width, bitmap.Height, 1);
  if (status == KSUCCESS) status = Zv_AllocateBitmap(mask.get(), ALLOC_MEMORY);
  if (status != KSUCCESS) return status;
  mask->ViewPerspective = bitmap.ViewPerspective;
  if (status = clearRows(*mask); status != KSUCCESS) return status;
  if (status = copyRegion(*mask, bitmap, 0, 0); status != KSUCCESS) return status;
  if (status = Zv_FillBitmap(mask.get(), maskIndex); status != KSUCCESS) return status;
  freeRegion(*mask);
  return KSUCCESS;
}

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

int ZAVO_CALL Zv_CreateMaskFromBitmapRgn(const BitmapHandle* bitmap, BitmapHandle* mask) {
  if (bitmap == nullptr || mask == nullptr) return KERR_BAD_PARAMETER;
  OwnedBitmap made;
  if (const int status = makeRegionMask(made, *bitmap); status != KSUCCESS) return status;
  (void)Zv_CreateBitmapFixedPalette(made.get());
  *mask = made.release();
  return KSUCCESS;
}
