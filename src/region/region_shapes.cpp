// Setting a region from a rectangle or from a system region: rounded rectangle, ellipse, polygon, any handle. Their
// pixels are exactly those of the system's own regions.
#include <zavo.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "core/memory.h"
#include "core/owners.h"
#include "region/combine_shape.h"
#include "region/shape.h"

namespace zavo {
namespace {

// What the graphics interface can do: coordinates of 27 bits and a sign. It keeps a record for every row of a curve or
// polygon, so their height is limited too.
constexpr int coordinateLimit = 1 << 27;
constexpr int curveLimit = 1 << 20;

bool isWithinLimit(LONG coordinate) {
  return coordinate >= -coordinateLimit && coordinate <= coordinateLimit;
}

bool isWithinLimit(const RECT& rect) {
  return isWithinLimit(rect.left) && isWithinLimit(rect.top) && isWithinLimit(rect.right) && isWithinLimit(rect.bottom);
}

// The side of an ellipse that the system cuts down to a side of its rectangle.
int ellipseSide(int side, LONG low, LONG high) {
  return static_cast<int>(std::min<int64_t>(std::abs(int64_t{side}), std::abs(int64_t{high} - low)));
}

int setSystemRegion(BitmapHandle& bitmap, const RegionXForm* xform, HRGN system, int combineMode) {
  RECT box;
  const int complexity = GetRgnBox(system, &box);
  if (complexity == ERROR || complexity == NULLREGION) return KERR_BAD_PARAMETER;

  const DWORD bytes = GetRegionData(system, 0, nullptr);
  if (bytes < sizeof(RGNDATAHEADER)) return KERR_NO_MEMORY;
  const OsBlock<uint8_t> block = OsBlock<uint8_t>::allocate(bytes);
  if (!block) return KERR_NO_MEMORY;
  auto* const data = reinterpret_cast<RGNDATA*>(block.get());
  if (GetRegionData(system, bytes, data) == 0) return KERR_NO_MEMORY;

  OwnedRegion shape;
  const auto* const rects = reinterpret_cast<const RECT*>(data->Buffer);
  if (const int status = shapeFromRects(shape, bitmap, xform, box, rects, data->rdh.nCount); status != KSUCCESS) {
    return status;
  }
  return combineShape(bitmap, std::move(shape), combineMode);
}

int setRoundRect(BitmapHandle& bitmap, const RegionXForm* xform, const RECT& rect, int ellipseWidth, int ellipseHeight,
                 int combineMode) {
  const int width = ellipseSide(ellipseWidth, rect.left, rect.right);
  const int height = ellipseSide(ellipseHeight, rect.top, rect.bottom);
  if (!isWithinLimit(rect) || width > curveLimit || height > curveLimit) return KERR_NO_MEMORY;
  const RegionObject system(CreateRoundRectRgn(rect.left, rect.top, rect.right, rect.bottom, width, height));
  if (!system) return KERR_NO_MEMORY;
  return setSystemRegion(bitmap, xform, system.get(), combineMode);
}

int setEllipse(BitmapHandle& bitmap, const RegionXForm* xform, const RECT& rect, int combineMode) {
  if (!isWithinLimit(rect) || ellipseSide(curveLimit + 1, rect.left, rect.right) > curveLimit ||
      ellipseSide(curveLimit + 1, rect.top, rect.bottom) > curveLimit) {
    return KERR_NO_MEMORY;
  }
  const RegionObject system(CreateEllipticRgnIndirect(&rect));
  if (!system) return KERR_NO_MEMORY;
  return setSystemRegion(bitmap, xform, system.get(), combineMode);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_SetBitmapRgnRect(BitmapHandle* bitmap, const RegionXForm* xform, const RECT* rect, int combineMode) {
  if (bitmap == nullptr || rect == nullptr) return KERR_BAD_PARAMETER;
  OwnedRegion shape;
  if (const int status = shapeFromRects(shape, *bitmap, xform, *rect, rect, 1); status != KSUCCESS) return status;
  return combineShape(*bitmap, std::move(shape), combineMode);
}

int ZAVO_CALL Zv_SetBitmapRgnRoundRect(BitmapHandle* bitmap, const RegionXForm* xform, const RECT* rect,
                                       int ellipseWidth, int ellipseHeight, int combineMode) {
  if (bitmap == nullptr || rect == nullptr) return KERR_BAD_PARAMETER;
  return setRoundRect(*bitmap, xform, *rect, ellipseWidth, ellipseHeight, combineMode);
}

int ZAVO_CALL Zv_SetBitmapRgnEllipse(BitmapHandle* bitmap, const RegionXForm* xform, const RECT* rect,
                                     int combineMode) {
  if (bitmap == nullptr || rect == nullptr) return KERR_BAD_PARAMETER;
  return setEllipse(*bitmap, xform, *rect, combineMode);
}

int ZAVO_CALL Zv_SetBitmapRgnPolygon(BitmapHandle* bitmap, const RegionXForm* xform, const POINT* points, int count,
                                     int fillMode, int combineMode) {
  if (bitmap == nullptr || points == nullptr || count < 1) return KERR_BAD_PARAMETER;
  if (fillMode != POLYGON_WINDING && fillMode != POLYGON_ALTERNATE) return KERR_BAD_PARAMETER;
  RECT box = {points[0].x, points[0].y, points[0].x, points[0].y};
  for (int i = 1; i < count; ++i) {
    box = {std::min(box.left, points[i].x), std::min(box.top, points[i].y), std::max(box.right, points[i].x),
           std::max(box.bottom, points[i].y)};
  }
  if (!isWithinLimit(box) || box.bottom - box.top > curveLimit) return KERR_NO_MEMORY;
  const RegionObject system(CreatePolygonRgn(points, count, fillMode == POLYGON_WINDING ? WINDING : ALTERNATE));
  if (!system) return KERR_NO_MEMORY;
  return setSystemRegion(*bitmap, xform, system.get(), combineMode);
}

int ZAVO_CALL Zv_SetBitmapRgnHandle(BitmapHandle* bitmap, const RegionXForm* xform, HRGN region, int combineMode) {
  if (bitmap == nullptr) return KERR_BAD_PARAMETER;
  if (region == nullptr) {
    freeRegion(*bitmap);
    return KSUCCESS;
  }
  return setSystemRegion(*bitmap, xform, region, combineMode);
}
