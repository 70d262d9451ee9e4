// Regions on a display under every transform: their system regions, bounds and outlines, and what of these is kept.
#include <climits>
#include <string>

#include "region/region_model.h"
#include "support/canvas.h"
#include "support/platform_watch.h"

namespace zavotest {
namespace {

constexpr int side = 90;  // of the display

// Rectangles laid over each other.
void setScatteredRegion(BitmapHandle& bitmap, std::mt19937& random) {
  int mode = CombineSet;
  for (unsigned part = random() % 40 + 1; part > 0; --part, mode = CombineXor) {
    RECT rect = {static_cast<LONG>(random() % 20), static_cast<LONG>(random() % 20), 0, 0};
    rect.right = rect.left + static_cast<LONG>(random() % 9) + 1;
    rect.bottom = rect.top + static_cast<LONG>(random() % 9) + 1;
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, mode), KSUCCESS);
  }
}

int roundedUp(int value, int divisor) {
  return (value + divisor - 1) / divisor;
}

// What a region looks like on a display: every stored pixel becomes a rectangle there.
PointSet displayed(BitmapHandle& bitmap, const RegionXForm* given) {
  const RegionXForm xform = given != nullptr ? *given : RegionXForm{bitmap.ViewPerspective, 1, 1, 1, 1, 0, 0};
  const PointSet stored = pointsOf(bitmap);
  PointSet set(side, side);
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
  return set;
}

// The system region holds these pixels and nothing beside the display.
void expectHandle(BitmapHandle& bitmap, const RegionXForm* xform, const PointSet& expected) {
  HRGN region = nullptr;
  int callerOwns = -1;
  ASSERT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, xform, &region, &callerOwns), KSUCCESS);
  PointSet set(side, side);
  set.fill([&](int x, int y) { return PtInRegion(region, x, y) != 0; });
  EXPECT_EQ(set, expected);
  RECT box = {};
  GetRgnBox(region, &box);
  EXPECT_EQ(box, expected.bounds());
  EXPECT_EQ(callerOwns, Zv_BitmapHasRgn(&bitmap) == 0 ? 1 : 0);
  if (callerOwns != 0) DeleteObject(region);
}

// The outline is the ends of runs, and what is within a pixel of a place, in the same run, that has nothing above or
// below it; it is drawn in stripes. The device context stays as it was.
void expectOutline(BitmapHandle& bitmap, const RegionXForm* xform, const PointSet& shown, unsigned frameType) {
  static constexpr uint8_t stripes[8] = {0x0F, 0x1E, 0x3C, 0x78, 0xF0, 0xE1, 0xC3, 0x87};
  const Canvas canvas(side, side);
  SetTextColor(canvas.dc(), RGB(1, 2, 3));
  SetBkColor(canvas.dc(), RGB(4, 5, 6));
  HGDIOBJ brush = SelectObject(canvas.dc(), GetStockObject(GRAY_BRUSH));
  ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, xform, frameType), KSUCCESS);
  EXPECT_EQ(GetTextColor(canvas.dc()), RGB(1, 2, 3));
  EXPECT_EQ(GetBkColor(canvas.dc()), RGB(4, 5, 6));
  EXPECT_EQ(SelectObject(canvas.dc(), brush), GetStockObject(GRAY_BRUSH));

  const auto open = [&](int x, int y) { return shown.has(x, y) && (!shown.has(x, y - 1) || !shown.has(x, y + 1)); };
  const auto isOutline = [&](int x, int y) {
    if (!shown.has(x, y) || Zv_BitmapHasRgn(&bitmap) == 0) return false;
    return !shown.has(x - 1, y) || !shown.has(x + 1, y) || open(x, y) || open(x - 1, y) || open(x + 1, y);
  };
  const Picture picture = canvas.picture();
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const bool isWhite = (stripes[(frameType + static_cast<unsigned>(y)) % 8] >> (7 - x % 8) & 1) != 0;
      const uint32_t expected = !isOutline(x, y) ? untouched : isWhite ? 0xFFFFFF : 0;
      ASSERT_EQ(picture.at(x, y), expected) << "type " << frameType << ", pixel " << x << ", " << y;
    }
  }
}

TEST(RegionDisplay, ShowsThePixelsUnderEveryTransform) {
  static constexpr int stored[] = {1, 2, 4, 8, 5};
  static constexpr int shown[] = {0, 2, 4, 8};
  static constexpr int scales[][2] = {{1, 1}, {3, 1}, {3, 2}, {2, 3}, {1, 2}};
  std::mt19937 random(1);
  for (unsigned index = 0; index < 120; ++index) {
    SCOPED_TRACE("case " + std::to_string(index));
    RegionBitmap bitmap(24, 25, stored[index % 5]);
    const RECT all = {0, 0, 24, 25};
    if (index % 13 != 0) setScatteredRegion(bitmap, random);
    if (index % 13 == 1) Zv_SetBitmapRgnRect(&bitmap, nullptr, &all, CombineSetNot);
    const auto& x = scales[random() % 5];
    const auto& y = scales[random() % 5];
    const auto offset = [&] { return static_cast<int>(random() % 9); };
    const RegionXForm given = {shown[index / 5 % 4], x[0], x[1], y[0], y[1], offset(), offset()};
    const RegionXForm* const xform = index % 7 == 0 ? nullptr : &given;
    const PointSet pixels = displayed(bitmap, xform);
    expectHandle(bitmap, xform, pixels);
    expectOutline(bitmap, xform, pixels, index % 8);

    RECT bounds = {};
    ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, xform, &bounds), KSUCCESS);
    const RECT tight = pixels.bounds();
    RECT both = {};
    UnionRect(&both, &bounds, &tight);
    EXPECT_TRUE(pixels.empty() || both == bounds) << "the bounds hold the region";
    if (xform == nullptr || (x[0] >= x[1] && y[0] >= y[1] && index % 13 != 1)) {
      EXPECT_EQ(bounds, tight);
    }
  }
}

struct Change {
  const char* name;
  void (*make)(BitmapHandle& bitmap, RegionXForm& xform);
  bool isMove = false;  // what is kept will do
};

constexpr Change changes[] = {
    {"none", [](BitmapHandle&, RegionXForm&) {}, true},
    {"moved right", [](BitmapHandle&, RegionXForm& xform) { xform.XOffset = 9; }, true},
    {"moved up", [](BitmapHandle&, RegionXForm& xform) { xform.YOffset = 0; }, true},
    {"another height", [](BitmapHandle&, RegionXForm& xform) { xform.YScaleDenominator = 2; }},
    {"another width", [](BitmapHandle&, RegionXForm& xform) { xform.XScaleNumerator = 3; }},
    {"another frame", [](BitmapHandle&, RegionXForm& xform) { xform.ViewPerspective = 8; }},
    {"another stored perspective", [](BitmapHandle& bitmap, RegionXForm&) { bitmap.ViewPerspective = 2; }},
    {"moved in the bitmap", [](BitmapHandle& bitmap, RegionXForm&) { Zv_OffsetBitmapRgn(&bitmap, 2, 0); }},
    {"another shape",
     [](BitmapHandle& bitmap, RegionXForm&) {
       const RECT rect = {0, 0, 5, 5};
       Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineXor);
     }},
};

TEST(RegionDisplay, IsKeptUntilSomethingChanges) {
  // What is made first after a change must not pass the other off as made since.
  for (const bool outlineFirst : {false, true}) {
    RegionBitmap bitmap(24, 25);
    std::mt19937 random(3);
    setScatteredRegion(bitmap, random);
    RegionXForm xform = {0, 2, 1, 2, 1, 3, 4};
    expectHandle(bitmap, &xform, displayed(bitmap, &xform));
    expectOutline(bitmap, &xform, displayed(bitmap, &xform), 2);
    for (const Change& change : changes) {
      SCOPED_TRACE(change.name);
      const RegionXForm before = xform;
      change.make(bitmap, xform);
      const PointSet pixels = displayed(bitmap, &xform);
      const CallCount regions("ExtCreateRegion");
      const CallCount moves("OffsetRgn");
      const CallCount outlines("CreateBitmap");
      if (outlineFirst) expectOutline(bitmap, &xform, pixels, 2);
      expectHandle(bitmap, &xform, pixels);
      if (!outlineFirst) expectOutline(bitmap, &xform, pixels, 2);
      EXPECT_EQ(regions.get() == 0, change.isMove);
      EXPECT_EQ(moves.get(), xform.XOffset != before.XOffset || xform.YOffset != before.YOffset ? 1u : 0u);
      EXPECT_EQ(outlines.get(), change.isMove ? 0u : 1u);
    }
  }
}

TEST(RegionDisplay, BadArguments) {
  const Canvas canvas(side, side);
  RegionBitmap bitmap(10, 10);
  HRGN region = nullptr;
  int callerOwns = 0;
  region = reinterpret_cast<HRGN>(&bitmap);
  EXPECT_EQ(Zv_IntGetBitmapRgnHandle(nullptr, nullptr, &region, &callerOwns), KERR_BAD_BITMAP);
  EXPECT_EQ(region, nullptr);
  EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, nullptr, nullptr, &callerOwns), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, nullptr, &region, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRgnHandle(nullptr, nullptr, &region), 0);
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), nullptr, nullptr, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, nullptr, 8), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_FrameBitmapRgn(nullptr, &bitmap, nullptr, 0), KERR_BAD_PARAMETER);

  // No coordinates for the graphics interface, whether the region is there or not.
  const RegionXForm huge = {0, INT_MAX, 1, 1, 1, 0, 0};
  const RECT all = {0, 0, 10, 10};
  RECT bounds = {};
  for (int withRegion = 0; withRegion < 2; ++withRegion) {
    EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, &huge, &region, &callerOwns), KERR_NO_MEMORY);
    EXPECT_EQ(region, nullptr);
    EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, &huge, &bounds), KSUCCESS);
    EXPECT_EQ(bounds.right, INT_MAX);
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &all, CombineSet), KSUCCESS);
  }
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, &huge, 0), KERR_NO_MEMORY);
  const RegionXForm tooLargeToOutline = {0, 1 << 20, 1, 1 << 20, 1, 0, 0};
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, &tooLargeToOutline, 0), KERR_NO_MEMORY);

  static constexpr RegionXForm unusable[] = {
      {1, 1, 1, 1, 1, 0, 0}, {3, 1, 1, 1, 1, 0, 0}, {0, 1, 0, 1, 1, 0, 0}, {0, 1, 1, 1, 0, 0, 0}};
  for (const RegionXForm& xform : unusable) {
    const RECT empty = {};
    EXPECT_EQ(Zv_IntGetBitmapRgnHandle(&bitmap, &xform, &region, &callerOwns), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetBitmapRgnHandle(&bitmap, &xform, &region), 0);
    EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, &xform, &bounds), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, &xform, 0), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_SetBitmapRgnRect(&bitmap, &xform, &empty, CombineSet), KERR_BAD_PARAMETER) << "even for no shape";
  }
}

// More rectangles than the system takes at once.
TEST(RegionDisplay, RefusedJoins) {
  for (unsigned n = 1;; ++n) {
    RegionBitmap bitmap(60, 30);
    std::mt19937 random(4);
    fillWithNoise(bitmap, random);
    ASSERT_EQ(Zv_SetBitmapRgnColor(&bitmap, 0x01000001, CombineSet), KSUCCESS);
    const Refusal refusal("CombineRgn", n);
    HRGN region = nullptr;
    int callerOwns = 0;
    const int status = Zv_IntGetBitmapRgnHandle(&bitmap, nullptr, &region, &callerOwns);
    EXPECT_EQ(status, refusal.refused() != nullptr ? KERR_NO_MEMORY : KSUCCESS);
    if (refusal.refused() != nullptr) continue;
    EXPECT_GT(n, 5u) << "parts are joined";
    break;
  }
}

}  // namespace
}  // namespace zavotest
