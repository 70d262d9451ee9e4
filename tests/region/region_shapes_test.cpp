// Shapes: the numbers of small cases, sizes beyond all reason, bad arguments.
#include <climits>
#include <string>

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

TEST(RegionShapes, ModesOnABitmapWithoutARegion) {
  const RECT shape = {-5, 15, 8, 90};
  const RECT outside = {30, 0, 40, 5};
  const struct {
    int mode;
    RECT inside;  // bounds after the shape
    RECT beyond;  // bounds after one outside the bitmap
  } cases[] = {
      {CombineAnd, {0, 15, 8, 20}, {}},
      {CombineSet, {0, 15, 8, 20}, {}},
      {CombineAndNotBitmap, {}, {}},
      {CombineAndNotRegion, {0, 0, 20, 20}, {0, 0, 20, 20}},
      {CombineOr, {0, 0, 20, 20}, {0, 0, 20, 20}},
      {CombineXor, {0, 0, 20, 20}, {0, 0, 20, 20}},
      {CombineSetNot, {0, 0, 20, 20}, {0, 0, 20, 20}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("mode " + std::to_string(c.mode));
    RegionBitmap bitmap(20, 20);
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &shape, c.mode), KSUCCESS);
    EXPECT_EQ(boundsOf(bitmap), c.inside);
    EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 1) << "empty, but present";
    Zv_FreeBitmapRgn(&bitmap);
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &outside, c.mode), KSUCCESS);
    EXPECT_EQ(boundsOf(bitmap), c.beyond);
    EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 1);
    EXPECT_TRUE(isWellFormed(bitmap));
  }
}

TEST(RegionShapes, ScalingDividesTowardsZero) {
  RegionBitmap bitmap(20, 20);
  const RegionXForm half = {0, 1, 2, 1, 1, 0, 0};
  const RECT run = {3, 0, 9, 1};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, &half, &run, CombineSet), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), (RECT{1, 0, 4, 1}));

  // The bounds of a scaled shape are scaled too: here the upper row vanishes, and with it the last columns.
  HRGN shape = CreateRectRgn(0, 0, 12, 1);
  HRGN lower = CreateRectRgn(0, 1, 6, 2);
  CombineRgn(shape, shape, lower, RGN_OR);
  const RegionXForm flat = {0, 1, 1, 1, 2, 0, 0};
  ASSERT_EQ(Zv_SetBitmapRgnHandle(&bitmap, &flat, shape, CombineSet), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), (RECT{0, 0, 12, 1}));
  unsigned area = 0;
  EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
  EXPECT_EQ(area, 6u);
  EXPECT_TRUE(isWellFormed(bitmap));
  DeleteObject(lower);
  DeleteObject(shape);
}

TEST(RegionShapes, TouchingRunsBecomeOne) {
  RegionBitmap bitmap(20, 4);
  const RECT left = {0, 0, 5, 4};
  const RECT right = {5, 0, 9, 4};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &left, CombineSet), KSUCCESS);
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &right, CombineOr), KSUCCESS);
  int segments[20];
  unsigned count = 0;
  ASSERT_EQ(Zv_GetBitmapClipSegments(&bitmap, 2, segments, &count), KSUCCESS);
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(segments[0], 0);
  EXPECT_EQ(segments[1], 9);
}

TEST(RegionShapes, OffsetMakesARegionAndCutsIt) {
  RegionBitmap bitmap(20, 10);
  ASSERT_EQ(Zv_OffsetBitmapRgn(&bitmap, 0, 5), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), (RECT{5, 0, 20, 10}));
  ASSERT_EQ(Zv_OffsetBitmapRgn(&bitmap, -3, -9), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), (RECT{0, 0, 11, 7}));
  ASSERT_EQ(Zv_OffsetBitmapRgn(&bitmap, INT_MAX, INT_MIN), KSUCCESS);
  EXPECT_EQ(boundsOf(bitmap), RECT{});
  EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 1);
  EXPECT_TRUE(isWellFormed(bitmap));
  EXPECT_EQ(Zv_OffsetBitmapRgn(nullptr, 0, 0), KERR_BAD_BITMAP);
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
}

// The system leaves rows of such ellipses undefined.
TEST(RegionShapes, TallNarrowEllipsesAreAtLeastWellFormed) {
  for (int width = 1; width <= 8; ++width) {
    for (const int height : {20, 100, 399}) {
      RegionBitmap bitmap(30, 300);
      const RECT rect = {5, -50, 5 + width, height - 50};
      (void)Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &rect, CombineSet);
      EXPECT_TRUE(isWellFormed(bitmap)) << width << " x " << height;
    }
  }
}

TEST(RegionShapes, BadArguments) {
  RegionBitmap bitmap(20, 20);
  const RECT rect = {1, 1, 9, 9};
  const POINT points[] = {{1, 1}, {9, 1}, {5, 9}};
  for (const int mode : {-1, 7, INT_MAX, INT_MIN}) {
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, mode), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, points, 3, POLYGON_WINDING, mode), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_SetBitmapRgnRect(nullptr, nullptr, &rect, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnRoundRect(nullptr, nullptr, &rect, 2, 2, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnRoundRect(&bitmap, nullptr, nullptr, 2, 2, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnEllipse(nullptr, nullptr, &rect, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnEllipse(&bitmap, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(nullptr, nullptr, points, 3, POLYGON_WINDING, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, nullptr, 3, POLYGON_WINDING, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, points, 0, POLYGON_WINDING, CombineSet), KERR_BAD_PARAMETER);
  for (const int fillMode : {-1, 2}) {
    EXPECT_EQ(Zv_SetBitmapRgnPolygon(&bitmap, nullptr, points, 3, fillMode, CombineSet), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_SetBitmapRgnHandle(nullptr, nullptr, nullptr, CombineSet), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SetBitmapRgnHandle(&bitmap, nullptr, static_cast<HRGN>(GetStockObject(WHITE_BRUSH)), CombineSet),
            KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_FreeBitmapRgn(nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_BitmapHasRgn(nullptr), 0);
  EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 0);
}

}  // namespace
}  // namespace zavotest
