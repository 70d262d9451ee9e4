// Questions about regions, with and without one.
#include "region/region_model.h"

namespace zavotest {
namespace {

// Rows 2 to 6: (3, 8) and (10, 12); nothing; (0, 20); nothing; (5, 6).
void setRows(BitmapHandle& bitmap) {
  const RECT parts[] = {{3, 2, 8, 3}, {10, 2, 12, 3}, {0, 4, 20, 5}, {5, 6, 6, 7}};
  int mode = CombineSet;
  for (const RECT& part : parts) {
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, mode), KSUCCESS);
    mode = CombineOr;
  }
}

TEST(RegionQueries, PointsTakeTheRowFirst) {
  RegionBitmap bitmap(20, 10);
  for (int y = -2; y < 14; ++y) {
    for (int x = -2; x < 24; ++x) {
      EXPECT_EQ(Zv_IsPtInBitmapRgn(&bitmap, y, x), x >= 0 && x < 20 && y >= 0 && y < 10 ? 1 : 0);
    }
  }
  setRows(bitmap);
  const struct {
    int row, column, in;
  } cases[] = {{2, 2, 0},  {2, 3, 1}, {2, 7, 1}, {2, 8, 0}, {2, 9, 0},  {2, 10, 1}, {2, 11, 1},
               {2, 12, 0}, {3, 3, 0}, {3, 5, 0}, {4, 0, 1}, {4, 19, 1}, {4, 20, 0}, {4, -1, 0},
               {6, 5, 1},  {6, 6, 0}, {1, 5, 0}, {7, 5, 0}, {-9, 5, 0}, {5, 2, 0},  {0x7FFFFFFF, 5, 0}};
  for (const auto& c : cases)
    EXPECT_EQ(Zv_IsPtInBitmapRgn(&bitmap, c.row, c.column), c.in) << c.row << ", " << c.column;
  EXPECT_EQ(Zv_IsPtInBitmapRgn(nullptr, 0, 0), 0);
}

TEST(RegionQueries, AreaBoundsAndSegments) {
  RegionBitmap bitmap(20, 10);
  unsigned area = 0;
  unsigned most = 0;
  unsigned count = 99;
  int segments[32] = {};
  RECT bounds = {};
  EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
  EXPECT_EQ(area, 200u);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  EXPECT_EQ(bounds, (RECT{0, 0, 20, 10}));
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, &most), KSUCCESS);
  EXPECT_EQ(most, 2u);
  EXPECT_EQ(Zv_GetBitmapClipSegments(&bitmap, 3, segments, &count), KSUCCESS);
  EXPECT_TRUE(count == 2 && segments[0] == 0 && segments[1] == 20);

  setRows(bitmap);
  EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
  EXPECT_EQ(area, 28u);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  EXPECT_EQ(bounds, (RECT{0, 2, 20, 7}));
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, &most), KSUCCESS);
  EXPECT_EQ(most, 20u);
  const struct {
    int row;
    std::vector<int> values;
  } rows[] = {{1, {}}, {2, {3, 8, 10, 12}}, {3, {}}, {4, {0, 20}}, {5, {}}, {6, {5, 6}}, {7, {}}, {-1, {}}};
  for (const auto& row : rows) {
    ASSERT_EQ(Zv_GetBitmapClipSegments(&bitmap, row.row, segments, &count), KSUCCESS);
    EXPECT_EQ(std::vector<int>(segments, segments + count), row.values) << "row " << row.row;
  }

  const RECT five = {4, 4, 9, 5};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &five, CombineSet), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, &most), KSUCCESS);
  EXPECT_EQ(most, 6u);
  const RECT all = {0, 0, 20, 10};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &all, CombineSetNot), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, &most), KSUCCESS);
  EXPECT_EQ(most, 0u);
  EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
  EXPECT_EQ(area, 0u);
}

TEST(RegionQueries, BadArguments) {
  RegionBitmap bitmap(20, 10);
  unsigned value = 0;
  int segments[2];
  RECT bounds;
  EXPECT_EQ(Zv_GetBitmapRgnArea(nullptr, &value), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(nullptr, nullptr, &bounds), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, nullptr), KERR_BAD_PARAMETER);
  BitmapHandle bare{};
  ASSERT_EQ(Zv_InitBitmap(&bare, 4, 4, 8), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bare, nullptr, &bounds), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(nullptr, &value), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapClipSegments(nullptr, 0, segments, &value), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapClipSegments(&bitmap, 0, nullptr, &value), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapClipSegments(&bitmap, 0, segments, nullptr), KERR_BAD_PARAMETER);
}

// Copies of a bitmap, cut and moved with their regions.
TEST(RegionQueries, RegionsGoAlongWithCopies) {
  RegionBitmap bitmap(20, 10);
  setRows(bitmap);
  const PointSet original = pointsOf(bitmap);
  TestBitmap copy;
  ASSERT_EQ(Zv_CopyBitmap(&copy, &bitmap), KSUCCESS);
  EXPECT_NE(copy.Region, bitmap.Region);
  EXPECT_EQ(pointsOf(copy), original);

  const struct {
    int left, top, width, height;
  } cuts[] = {{0, 0, 20, 10}, {4, 2, 7, 4}, {-3, -5, 30, 20}, {9, 3, 30, 30}, {0, 7, 20, 3}};
  for (const auto& cut : cuts) {
    TestBitmap part;
    ASSERT_EQ(Zv_CopyBitmapRect(&part, &bitmap, cut.left, cut.top, static_cast<unsigned>(cut.width),
                                static_cast<unsigned>(cut.height)),
              KSUCCESS);
    PointSet expected(cut.width, cut.height);
    expected.fill([&](int x, int y) { return original.has(x + cut.left, y + cut.top); });
    EXPECT_EQ(Zv_BitmapHasRgn(&part), 1);
    EXPECT_EQ(pointsOf(part), expected);
    EXPECT_TRUE(isWellFormed(part));
  }
}

TEST(RegionQueries, RegionsAreCutWithTheirBitmaps) {
  RegionBitmap bitmap(20, 10, VIEW_BOTTOM_UP);
  setRows(bitmap);
  const PointSet original = pointsOf(bitmap);
  for (const int height : {12, 5, 3, 1, 9}) {
    ASSERT_EQ(Zv_ChangeBitmapHeight(&bitmap, height), KSUCCESS);
    EXPECT_TRUE(isWellFormed(bitmap));
    PointSet expected(20, height);
    if (height > 2 && height != 9) expected.fill([&](int x, int y) { return original.has(x, y); });
    EXPECT_EQ(pointsOf(bitmap), expected) << "height " << height;
  }
}

}  // namespace
}  // namespace zavotest
