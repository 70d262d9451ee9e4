// Outlines drawn on a real device context and read back.
#include <string>

#include "region/region_model.h"
#include "support/canvas.h"
#include "support/platform_watch.h"

namespace zavotest {
namespace {

constexpr int canvasSize = 100;
constexpr uint32_t black = 0;
constexpr uint32_t white = 0xFFFFFF;

// The outline of a set: the ends of runs, and what is within a pixel of a place, in the same run, that has nothing
// above or below it.
PointSet outlineOf(const PointSet& set) {
  PointSet outline(set.width(), set.height());
  const auto open = [&](int x, int y) { return set.has(x, y) && (!set.has(x, y - 1) || !set.has(x, y + 1)); };
  outline.fill([&](int x, int y) {
    if (!set.has(x, y)) return false;
    return !set.has(x - 1, y) || !set.has(x + 1, y) || open(x, y) || open(x - 1, y) || open(x + 1, y);
  });
  return outline;
}

// Brush k of the stripes.
uint32_t stripe(unsigned k, int x, int y) {
  static constexpr uint8_t rows[8] = {0x0F, 0x1E, 0x3C, 0x78, 0xF0, 0xE1, 0xC3, 0x87};
  return (rows[(k + static_cast<unsigned>(y)) % 8] >> (7 - x % 8) & 1) != 0 ? white : black;
}

void expectFrame(const Canvas& canvas, const PointSet& shown, unsigned frameType) {
  const PointSet outline = outlineOf(shown);
  const Picture picture = canvas.picture();
  for (int y = 0; y < canvasSize; ++y) {
    for (int x = 0; x < canvasSize; ++x) {
      const uint32_t expected = outline.has(x, y) ? stripe(frameType, x, y) : untouched;
      ASSERT_EQ(picture.at(x, y), expected) << "type " << frameType << ", pixel " << x << ", " << y;
    }
  }
}

// What the region covers on a display, by its system region.
PointSet shownOn(BitmapHandle& bitmap, const RegionXForm* xform) {
  HRGN region = nullptr;
  EXPECT_EQ(Zv_GetBitmapRgnHandle(&bitmap, xform, &region), KSUCCESS);
  const PointSet set = pointsOf(region, canvasSize, canvasSize);
  DeleteObject(region);
  return set;
}

void setScatteredRegion(BitmapHandle& bitmap, unsigned seed) {
  std::mt19937 random(seed);
  int mode = CombineSet;
  for (unsigned part = random() % 12 + 1; part > 0; --part, mode = CombineXor) {
    RECT rect = {static_cast<LONG>(random() % 20), static_cast<LONG>(random() % 20), 0, 0};
    rect.right = rect.left + static_cast<LONG>(random() % 9) + 1;
    rect.bottom = rect.top + static_cast<LONG>(random() % 9) + 1;
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, mode), KSUCCESS);
  }
}

TEST(RegionFrame, DrawsTheOutlineInEightPhases) {
  RegionBitmap bitmap(40, 40);
  setScatteredRegion(bitmap, 11);
  for (unsigned type = 0; type < 8; ++type) {
    Canvas canvas(canvasSize, canvasSize);
    ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, nullptr, type), KSUCCESS);
    expectFrame(canvas, shownOn(bitmap, nullptr), type);
  }
}

TEST(RegionFrame, FollowsTheDisplayTransform) {
  static constexpr int scales[][2] = {{1, 1}, {3, 1}, {3, 2}, {2, 3}};
  std::mt19937 random(12);
  for (int index = 0; index < 32; ++index) {
    SCOPED_TRACE("case " + std::to_string(index));
    RegionBitmap bitmap(28, 29, 1 << index % 4);
    setScatteredRegion(bitmap, static_cast<unsigned>(index));
    static constexpr int shown[] = {0, 2, 4, 8};
    const auto& x = scales[random() % 4];
    const auto& y = scales[random() % 4];
    const RegionXForm xform = {shown[index / 4 % 4], x[0], x[1], y[0], y[1], 5, 7};
    Canvas canvas(canvasSize, canvasSize);
    ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, &xform, 3), KSUCCESS);
    expectFrame(canvas, shownOn(bitmap, &xform), 3);
  }
}

TEST(RegionFrame, KnownOutlines) {
  RegionBitmap bitmap(40, 40);
  const RECT line = {3, 5, 13, 6};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &line, CombineSet), KSUCCESS);
  Canvas canvas(canvasSize, canvasSize);
  ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, nullptr, 0), KSUCCESS);
  for (int x = 3; x < 13; ++x) EXPECT_EQ(canvas.picture().at(x, 5), stripe(0, x, 5)) << "the whole of a single row";

  const RECT box = {3, 5, 13, 15};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &box, CombineSet), KSUCCESS);
  canvas.clear();
  ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, nullptr, 0), KSUCCESS);
  for (int y = 5; y < 15; ++y) {
    for (int x = 3; x < 13; ++x) {
      const bool edge = y == 5 || y == 14 || x == 3 || x == 12;
      EXPECT_EQ(canvas.picture().at(x, y), edge ? stripe(0, x, y) : untouched) << x << ", " << y;
    }
  }
}

TEST(RegionFrame, LeavesTheDeviceContextAsItWas) {
  Canvas canvas(canvasSize, canvasSize);
  RegionBitmap bitmap(40, 40);
  SetTextColor(canvas.dc(), RGB(1, 2, 3));
  SetBkColor(canvas.dc(), RGB(4, 5, 6));
  HGDIOBJ brush = SelectObject(canvas.dc(), GetStockObject(GRAY_BRUSH));
  ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, nullptr, 0), KSUCCESS);
  EXPECT_EQ(canvas.picture().at(0, 0), untouched) << "nothing without a region";
  setScatteredRegion(bitmap, 13);
  ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, nullptr, 5), KSUCCESS);
  expectFrame(canvas, shownOn(bitmap, nullptr), 5);
  EXPECT_EQ(GetTextColor(canvas.dc()), RGB(1, 2, 3));
  EXPECT_EQ(GetBkColor(canvas.dc()), RGB(4, 5, 6));
  EXPECT_EQ(SelectObject(canvas.dc(), brush), GetStockObject(GRAY_BRUSH));
}

TEST(RegionFrame, KeepsTheOutlineUntilSomethingChanges) {
  RegionBitmap bitmap(30, 20);
  setScatteredRegion(bitmap, 14);
  RegionXForm xform = {0, 2, 1, 2, 1, 0, 0};
  const CallCount made("CreateBitmap");
  const auto expectShown = [&](unsigned makes, const char* what) {
    SCOPED_TRACE(what);
    const unsigned before = made.get();
    Canvas canvas(canvasSize, canvasSize);
    ASSERT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, &xform, 2), KSUCCESS);
    EXPECT_EQ(made.get() - before, makes);
    expectFrame(canvas, shownOn(bitmap, &xform), 2);
  };
  expectShown(1, "first");
  xform.XOffset = 9;
  xform.YOffset = 4;
  expectShown(0, "moved");
  xform.XScaleNumerator = 3;
  expectShown(1, "another scale");
  xform.ViewPerspective = 2;
  expectShown(1, "another frame");
  bitmap.ViewPerspective = 8;
  expectShown(1, "another stored perspective");
  // The system region made meanwhile must not pass an outline of the old perspective off as one of the new.
  bitmap.ViewPerspective = 2;
  (void)shownOn(bitmap, &xform);
  expectShown(1, "another perspective, seen first by the system region");
  ASSERT_EQ(Zv_OffsetBitmapRgn(&bitmap, 2, 2), KSUCCESS);
  expectShown(1, "moved in the bitmap");
}

TEST(RegionFrame, BadArguments) {
  Canvas canvas(canvasSize, canvasSize);
  RegionBitmap bitmap(40, 40);
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), nullptr, nullptr, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, nullptr, 8), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_FrameBitmapRgn(nullptr, &bitmap, nullptr, 0), KERR_BAD_PARAMETER);
  setScatteredRegion(bitmap, 15);
  const RegionXForm unusable = {1, 1, 1, 1, 1, 0, 0};
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, &unusable, 0), KERR_BAD_PARAMETER);
  const RegionXForm huge = {0, 1 << 20, 1, 1 << 20, 1, 0, 0};
  EXPECT_EQ(Zv_FrameBitmapRgn(canvas.dc(), &bitmap, &huge, 0), KERR_NO_MEMORY);
}

}  // namespace
}  // namespace zavotest
