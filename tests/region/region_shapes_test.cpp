// Shapes and questions about regions: what changes nothing, sizes beyond all reason, bad arguments, numbers of a small
// case.
#include <climits>

#include "region/region_model.h"

namespace zavotest {
namespace {

RECT boundsOf(BitmapHandle& bitmap) {
  RECT bounds = {-1, -1, -1, -1};
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  return bounds;
}

TEST(RegionShapes, EmptyShapesChangeNothingInAnyMode) {
  const RECT first = {2, 3, 7, 8};
  const RECT empty = {5, 5, 5, 9};
  const RECT reversed = {9, 9, 5, 5};
  const RECT thin = {2, 0, 3, 10};  // vanishes at half the width
  const RegionXForm half = {0, 1, 2, 1, 1, 0, 0};
  const RegionXForm mirrored = {0, -1, 1, 1, 1, 0, 0};
  for (int mode = -1; mode <= 7; ++mode) {
    RegionBitmap bitmap(20, 20);
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &first, CombineSet), KSUCCESS);
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &empty, mode), KSUCCESS) << "before the mode is looked at";
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &reversed, mode), KSUCCESS);
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, &half, &thin, mode), KSUCCESS);
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, &mirrored, &thin, mode), KSUCCESS);
    EXPECT_EQ(boundsOf(bitmap), first);
    EXPECT_EQ(Zv_SetBitmapRgnHandle(&bitmap, nullptr, nullptr, mode), KSUCCESS);
    EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 0) << "a null handle clears";
  }
}

TEST(RegionShapes, SizesBeyondAllReason) {
  const RECT everything = {INT_MIN, INT_MIN, INT_MAX, INT_MAX};
  const RegionXForm huge = {4, INT_MAX, 1, INT_MIN, -1, INT_MIN, INT_MIN};
  const RegionXForm tiny = {2, 1, INT_MAX, 1, INT_MAX, INT_MAX, INT_MAX};
  for (const RegionXForm* xform : {static_cast<const RegionXForm*>(nullptr), &huge, &tiny}) {
    RegionBitmap bitmap(20, 10, VIEW_TURNED_270);
    const PointSet all = pointsOf(bitmap);
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, xform, &everything, CombineOr), KSUCCESS);
    EXPECT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, xform, &everything, CombineOr), KERR_NO_MEMORY);
    EXPECT_EQ(Zv_SetBitmapRgnRoundRect(&bitmap, xform, &everything, INT_MIN, INT_MAX, CombineOr), KERR_NO_MEMORY);
    const POINT points[] = {{INT_MIN, INT_MIN}, {INT_MAX, 0}, {0, INT_MAX}};
    EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, xform, points, 3, POLYGON_WINDING, CombineOr), KERR_NO_MEMORY);
    HRGN system = CreateRectRgn(-(1 << 26), -(1 << 26), 1 << 26, 1 << 26);
    EXPECT_EQ(Zv_SetBitmapRgnHandle(&bitmap, xform, system, CombineOr), KSUCCESS);
    DeleteObject(system);
    EXPECT_TRUE(isWellFormed(bitmap));
    EXPECT_EQ(pointsOf(bitmap), all);
  }
  // Only what the bitmap can hold is built.
  RegionBitmap bitmap(20, 10);
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &everything, CombineSet), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), (RECT{0, 0, 20, 10}));
  const RECT wide = {-500000, -500000, 500000, 500000};
  ASSERT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &wide, CombineAnd), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), (RECT{0, 0, 20, 10}));
  ASSERT_EQ(Zv_OffsetBitmapRgn(&bitmap, INT_MAX, INT_MIN), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), RECT{});
  EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 1);
  EXPECT_TRUE(isWellFormed(bitmap));
  // The system leaves rows of tall narrow ellipses undefined.
  for (int width = 1; width <= 8; ++width) {
    const RECT narrow = {5, -50, 5 + width, 349};
    (void)Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &narrow, CombineSet);
    EXPECT_TRUE(isWellFormed(bitmap)) << width;
  }
}

TEST(RegionShapes, BadArguments) {
  RegionBitmap bitmap(20, 20);
  BitmapHandle* const none = nullptr;
  const RECT rect = {1, 1, 9, 9};
  const POINT points[] = {{1, 1}, {9, 1}, {5, 9}};
  for (const int mode : {-1, 7, INT_MAX, INT_MIN}) {
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, mode), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, points, 3, POLYGON_WINDING, mode), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_SetBitmapRgnRect(none, nullptr, &rect, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnRoundRect(none, nullptr, &rect, 2, 2, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnRoundRect(&bitmap, nullptr, nullptr, 2, 2, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnEllipse(none, nullptr, &rect, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(none, nullptr, points, 3, POLYGON_WINDING, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, nullptr, 3, POLYGON_WINDING, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, points, 0, POLYGON_WINDING, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, points, 3, -1, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, points, 3, 2, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnHandle(none, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  HRGN const brush = static_cast<HRGN>(GetStockObject(WHITE_BRUSH));
  EXPECT_EQ(Zv_SetBitmapRgnHandle(&bitmap, nullptr, brush, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_OffsetBitmapRgn(none, 0, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_FreeBitmapRgn(none), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_BitmapHasRgn(none), 0);
  EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 0);

  unsigned value = 0;
  int segments[2];
  RECT bounds;
  BitmapHandle bare{};
  ASSERT_EQ(Zv_InitBitmap(&bare, 4, 4, 8), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapRgnArea(none, &value), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(none, nullptr, &bounds), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bare, nullptr, &bounds), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(none, &value), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapClipSegments(none, 0, segments, &value), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapClipSegments(&bitmap, 0, nullptr, &value), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapClipSegments(&bitmap, 0, segments, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_IsPtInBitmapRgn(none, 0, 0), 0);
}

}  // namespace
}  // namespace zavotest
