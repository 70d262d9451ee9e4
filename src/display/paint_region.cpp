// Painting through a bitmap's region: the region, scaled to the destination, becomes the clip for one paint.
#include <zavo.h>

#include <algorithm>

#include "core/owners.h"
#include "core/perspective.h"
#include "core/status.h"

namespace zavo {
namespace {

// Runs `paint` with the region as the device context's clip. The context keeps a copy of the region it is given.
template <typename Paint>
int paintThroughRegion(HDC dc, BitmapHandle* bitmap, const RECT* destination, Paint paint) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (destination == nullptr) return KERR_BAD_PARAMETER;
  const ImageSize seen = sizeInFrame(*bitmap, VIEW_UPRIGHT);
  // Painting takes a destination upside down as well.
  const LONG top = std::min(destination->top, destination->bottom);
  const LONG bottom = std::max(destination->top, destination->bottom);
  const RegionXForm transform = {.ViewPerspective = 0,
                                 .XScaleNumerator = destination->right - destination->left,
                                 .XScaleDenominator = seen.width,
                                 .YScaleNumerator = bottom - top,
                                 .YScaleDenominator = seen.height,
                                 .XOffset = destination->left,
                                 .YOffset = top};
  HRGN region = nullptr;
  int callerOwns = 0;
  const int status = Zv_IntGetBitmapRgnHandle(bitmap, &transform, &region, &callerOwns);
  if (status != KSUCCESS) return status;
  const SavedDC saved(dc);
  SelectClipRgn(dc, region);
  if (callerOwns != 0) DeleteObject(region);
  return paint();
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_PaintRgnDC(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                            const RECT* destination, const RECT* destinationClip, DWORD rop) {
  return paintThroughRegion(dc, bitmap, destination, [&] {
    return Zv_PaintDC(dc, bitmap, source, sourceClip, destination, destinationClip, rop);
  });
}

int ZAVO_CALL Zv_PaintRgnDCBuffer(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                                  const RECT* destination, const RECT* destinationClip, DWORD rop,
                                  const unsigned char* rows, int firstRow, int rowCount) {
  return paintThroughRegion(dc, bitmap, destination, [&] {
    return Zv_PaintDCBuffer(dc, bitmap, source, sourceClip, destination, destinationClip, rop, rows, firstRow,
                            rowCount);
  });
}
