// A region must go where its pixels go: a bitmap is 1 inside its region and 0 outside, before and after each operation.
#include <string>

#include "region/region_model.h"

namespace zavotest {
namespace {

struct Operation {
  const char* name;
  int (*run)(BitmapHandle&);
};

constexpr COLORREF zero = 0x01000000;

constexpr Operation operations[] = {
    {"flip", [](BitmapHandle& bitmap) { return Zv_FlipBitmap(&bitmap); }},
    {"reverse", [](BitmapHandle& bitmap) { return Zv_ReverseBitmap(&bitmap); }},
    {"quarter", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 90, ROTATE_RESIZE, zero); }},
    {"half", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 180, ROTATE_RESIZE, zero); }},
    {"three quarters", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 270, ROTATE_RESIZE, zero); }},
    {"upright", [](BitmapHandle& bitmap) { return Zv_ChangeBitmapViewPerspective(nullptr, &bitmap, VIEW_UPRIGHT); }},
    {"turned", [](BitmapHandle& bitmap) { return Zv_ChangeBitmapViewPerspective(nullptr, &bitmap, VIEW_TURNED_270); }},
    {"three times as large",
     [](BitmapHandle& bitmap) { return Zv_SizeBitmap(&bitmap, 3 * bitmap.Width, 3 * bitmap.Height, 0); }},
    {"cut", [](BitmapHandle& bitmap) { return Zv_TrimBitmap(&bitmap, 3, 2, 14, 9); }},
};

// Scattered pixels of the bitmap, in its region and set to 1.
void fillWithRegion(BitmapHandle& bitmap, std::mt19937& random) {
  fillWithNoise(bitmap, random);
  ASSERT_EQ(Zv_SetBitmapRgnColor(&bitmap, 0x01000001, CombineSet), KSUCCESS);
}

PointSet onesOf(BitmapHandle& bitmap) {
  const Picture picture = pictureOf(bitmap);
  PointSet ones(bitmap.Width, bitmap.Height);
  ones.fill([&](int x, int y) { return picture.at(x, y) != 0; });
  return ones;
}

TEST(RegionFollowsPixels, ThroughEveryOperation) {
  std::mt19937 random(21);
  for (const int perspective : {1, 2, 4, 8}) {
    for (const Operation& operation : operations) {
      SCOPED_TRACE(operation.name + std::string(", perspective ") + std::to_string(perspective));
      RegionBitmap bitmap(23, 17, perspective);
      fillWithRegion(bitmap, random);
      // A system region kept from before must not survive.
      HRGN region = nullptr;
      ASSERT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, &region), KSUCCESS);
      DeleteObject(region);

      ASSERT_EQ(operation.run(bitmap), KSUCCESS);
      EXPECT_TRUE(isWellFormed(bitmap));
      EXPECT_EQ(pointsOf(bitmap), onesOf(bitmap));
      ASSERT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, &region), KSUCCESS);
      EXPECT_EQ(pointsOf(region, bitmap.Width, bitmap.Height), pointsOf(bitmap));
      DeleteObject(region);
    }
  }
}

// As above for a region whose bounds are wider than its pixels.
TEST(RegionFollowsPixels, WithLooseBounds) {
  const RegionXForm flat = {0, 1, 1, 1, 2, 0, 0};
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name);
    RegionBitmap bitmap(23, 17, 0);
    HRGN shape = CreateRectRgn(0, 4, 22, 5);
    HRGN lower = CreateRectRgn(3, 5, 9, 6);
    CombineRgn(shape, shape, lower, RGN_OR);
    ASSERT_EQ(Zv_SetBitmapRgnHandle(&bitmap, &flat, shape, CombineSet), KSUCCESS);
    DeleteObject(lower);
    DeleteObject(shape);
    ASSERT_EQ(Zv_FillBitmap(&bitmap, 0x01000001), KSUCCESS);
    ASSERT_EQ(operation.run(bitmap), KSUCCESS);
    EXPECT_TRUE(isWellFormed(bitmap));
    EXPECT_EQ(pointsOf(bitmap), onesOf(bitmap));
  }
}

}  // namespace
}  // namespace zavotest
