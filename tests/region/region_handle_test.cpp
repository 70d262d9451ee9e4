// Regions on a display: handles and bounds under every transform, and the handle that is kept.
#include <string>

#include "region/region_model.h"
#include "support/platform_watch.h"

namespace zavotest {
namespace {

struct SystemRegion {
  HRGN handle = nullptr;
  SystemRegion() = default;
  SystemRegion(const SystemRegion&) = delete;
  SystemRegion& operator=(const SystemRegion&) = delete;
  ~SystemRegion() {
    if (handle != nullptr) DeleteObject(handle);
  }
};

// A region of scattered pixels and rectangles.
void setRandomRegion(BitmapHandle& bitmap, std::mt19937& random) {
  ASSERT_EQ(Zv_FreeBitmapRgn(&bitmap), KSUCCESS);
  int mode = CombineSet;
  for (unsigned part = random() % 40 + 1; part > 0; --part) {
    RECT rect = {static_cast<LONG>(random() % 20), static_cast<LONG>(random() % 20), 0, 0};
    rect.right = rect.left + static_cast<LONG>(random() % 6) + 1;
    rect.bottom = rect.top + static_cast<LONG>(random() % 6) + 1;
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, mode), KSUCCESS);
    mode = CombineXor;
  }
}

int roundedUp(int value, int divisor) {
  return (value + divisor - 1) / divisor;
}

// What a region looks like on a display: every stored pixel becomes a rectangle there.
PointSet displayed(BitmapHandle& bitmap, const RegionXForm& xform, int width, int height, RECT* bounds) {
  const PointSet stored = pointsOf(bitmap);
  PointSet set(width, height);
  for (int y = 0; y < bitmap.Height; ++y) {
    for (int x = 0; x < bitmap.Width; ++x) {
      if (!stored.has(x, y)) continue;
      int frameX = x;
      int frameY = y;
      Zv_PointFromBitmap(&bitmap, xform.ViewPerspective, &frameX, &frameY);
      set.putRect({roundedUp(frameX * xform.XScaleNumerator, xform.XScaleDenominator) + xform.XOffset,
                   frameY * xform.YScaleNumerator / xform.YScaleDenominator + xform.YOffset,
                   roundedUp((frameX + 1) * xform.XScaleNumerator, xform.XScaleDenominator) + xform.XOffset,
                   (frameY + 1) * xform.YScaleNumerator / xform.YScaleDenominator + xform.YOffset});
    }
  }
  if (bounds != nullptr) *bounds = set.bounds();
  return set;
}

TEST(RegionHandle, ShowsThePixelsOnEveryDisplay) {
  static constexpr int stored[] = {1, 2, 4, 8, 5};
  static constexpr int shown[] = {0, 2, 4, 8};
  static constexpr int scales[][2] = {{1, 1}, {3, 1}, {3, 2}, {2, 3}, {1, 2}};
  std::mt19937 random(1);
  for (int index = 0; index < 100; ++index) {
    SCOPED_TRACE("case " + std::to_string(index));
    RegionBitmap bitmap(24, 25, stored[index % 5]);
    setRandomRegion(bitmap, random);
    const auto& x = scales[random() % 5];
    const auto& y = scales[random() % 5];
    const RegionXForm xform = {shown[index / 5 % 4],          x[0], x[1], y[0], y[1], static_cast<int>(random() % 9),
                               static_cast<int>(random() % 9)};
    SystemRegion region;
    ASSERT_EQ(Zv_GetBitmapRgnHandle(&bitmap, &xform, &region.handle), KSUCCESS);
    RECT tight = {};
    EXPECT_EQ(pointsOf(region.handle, 90, 90), displayed(bitmap, xform, 90, 90, &tight));
    RECT box = {};
    GetRgnBox(region.handle, &box);
    EXPECT_EQ(box, tight) << "parts outside the picture";

    RECT bounds = {};
    ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, &xform, &bounds), KSUCCESS);
    UnionRect(&box, &box, &bounds);
    EXPECT_EQ(box, bounds) << "the bounds hold the region";
    if (x[0] >= x[1] && y[0] >= y[1]) {
      EXPECT_EQ(bounds, tight);
    }
  }
}

TEST(RegionHandle, NullTransformIsTheStoredFrame) {
  std::mt19937 random(2);
  for (const int perspective : {1, 2, 4, 8}) {
    RegionBitmap bitmap(24, 25, perspective);
    setRandomRegion(bitmap, random);
    SystemRegion region;
    ASSERT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, &region.handle), KSUCCESS);
    EXPECT_EQ(pointsOf(region.handle, 24, 25), pointsOf(bitmap));
    RECT bounds = {};
    ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
    EXPECT_EQ(bounds, pointsOf(bitmap).bounds());
  }
}

TEST(RegionHandle, WholeBitmapWithoutARegion) {
  RegionBitmap bitmap(10, 20, VIEW_TURNED_90);
  const RegionXForm xform = {0, 2, 1, 3, 1, 5, -7};
  HRGN region = nullptr;
  int callerOwns = 0;
  ASSERT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, &xform, &region, &callerOwns), KSUCCESS);
  EXPECT_EQ(callerOwns, 1);
  RECT box = {};
  EXPECT_EQ(GetRgnBox(region, &box), SIMPLEREGION);
  EXPECT_EQ(box, (RECT{5, -7, 45, 23}));
  DeleteObject(region);
}

TEST(RegionHandle, EmptyRegionGivesAnEmptyHandle) {
  RegionBitmap bitmap(10, 20);
  const RECT all = {0, 0, 10, 20};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &all, CombineSetNot), KSUCCESS);
  SystemRegion region;
  ASSERT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, &region.handle), KSUCCESS);
  RECT box = {};
  EXPECT_EQ(GetRgnBox(region.handle, &box), NULLREGION);
}

// The handle that the region keeps; null when it could not be had.
HRGN keptHandle(BitmapHandle& bitmap, const RegionXForm* xform) {
  HRGN region = nullptr;
  int callerOwns = 1;
  EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, xform, &region, &callerOwns), KSUCCESS);
  EXPECT_EQ(callerOwns, 0);
  return region;
}

TEST(RegionHandle, IsKeptUntilSomethingChanges) {
  RegionBitmap bitmap(24, 25);
  std::mt19937 random(3);
  setRandomRegion(bitmap, random);
  RegionXForm xform = {0, 2, 1, 2, 1, 3, 4};
  const CallCount made("ExtCreateRegion");
  const CallCount moved("OffsetRgn");
  const auto expectShown = [&](unsigned makes, unsigned moves, const char* what) {
    SCOPED_TRACE(what);
    const unsigned madeBefore = made.get();
    const unsigned movedBefore = moved.get();
    EXPECT_EQ(pointsOf(keptHandle(bitmap, &xform), 70, 70), displayed(bitmap, xform, 70, 70, nullptr));
    EXPECT_EQ(made.get() - madeBefore != 0, makes != 0);
    EXPECT_EQ(moved.get() - movedBefore, moves);
  };
  expectShown(1, 0, "first");
  expectShown(0, 0, "again");
  xform.XOffset = 10;
  expectShown(0, 1, "moved right");
  xform.YOffset = 0;
  expectShown(0, 1, "moved up");
  expectShown(0, 0, "moved and again");
  xform.YScaleDenominator = 2;
  expectShown(1, 0, "another scale");
  xform.ViewPerspective = 8;
  expectShown(1, 0, "another frame");
  bitmap.ViewPerspective = 2;
  expectShown(1, 0, "another stored perspective");
  ASSERT_EQ(Zv_OffsetBitmapRgn(&bitmap, 1, 0), KSUCCESS);
  expectShown(1, 0, "moved in the bitmap");
  const RECT rect = {0, 0, 5, 5};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineOr), KSUCCESS);
  expectShown(1, 0, "another shape");
}

TEST(RegionHandle, BadArguments) {
  RegionBitmap bitmap(10, 10);
  HRGN region = nullptr;
  int callerOwns = 0;
  EXPECT_EQ(Zv_IntGetBitmapRgnHandle(nullptr, nullptr, &region, &callerOwns), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, nullptr, nullptr, &callerOwns), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, nullptr, &region, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRgnHandle(nullptr, nullptr, &region), 0);

  const RegionXForm unusable[] = {
      {1, 1, 1, 1, 1, 0, 0}, {3, 1, 1, 1, 1, 0, 0}, {0, 1, 0, 1, 1, 0, 0}, {0, 1, 1, 1, 0, 0, 0}};
  for (const RegionXForm& xform : unusable) {
    RECT bounds = {};
    EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, &xform, &region, &callerOwns), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetBitmapRgnHandle(&bitmap, &xform, &region), 0);
    EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, &xform, &bounds), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, &xform, &bounds, CombineSet), KERR_BAD_PARAMETER) << "even for no shape";
  }
  // No coordinates for the graphics interface, whether the region is there or not.
  const RegionXForm huge = {0, 0x7FFFFFFF, 1, 1, 1, 0, 0};
  for (int withRegion = 0; withRegion < 2; ++withRegion) {
    EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, &huge, &region, &callerOwns), KERR_NO_MEMORY);
    EXPECT_EQ(region, nullptr);
    RECT bounds = {};
    EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, &huge, &bounds), KSUCCESS);
    EXPECT_EQ(bounds.right, 0x7FFFFFFF);
    const RECT all = {0, 0, 10, 10};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &all, CombineSet), KSUCCESS);
  }
}

// More rectangles than the system takes at once.
TEST(RegionHandle, RefusedJoins) {
  for (unsigned n = 1;; ++n) {
    RegionBitmap bitmap(60, 30);
    std::mt19937 random(4);
    fillWithNoise(bitmap, random);
    ASSERT_EQ(Zv_SetBitmapRgnColor(&bitmap, 0x01000001, CombineSet), KSUCCESS);
    const Refusal refusal("CombineRgn", n);
    HRGN region = nullptr;
    int callerOwns = 0;
    const int status = Zv_IntGetBitmapRgnHandle(&bitmap, nullptr, &region, &callerOwns);
    if (refusal.refused() == nullptr) {
      EXPECT_EQ(status, KSUCCESS);
      EXPECT_GT(n, 5u) << "parts are joined";
      break;
    }
    EXPECT_EQ(status, KERR_NO_MEMORY);
  }
}

}  // namespace
}  // namespace zavotest
