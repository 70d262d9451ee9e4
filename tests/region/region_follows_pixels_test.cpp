// A region must go where its pixels go: a bitmap is 1 inside its region and 0 outside, before and after each operation.
#include <string>

#include "region/region_model.h"

namespace zavotest {
namespace {

constexpr COLORREF zero = 0x01000000;

// Copies a rectangle and puts the copy in the bitmap's place.
template <int left, int top, unsigned width, unsigned height>
int copyRect(BitmapHandle& bitmap) {
  TestBitmap copy;
  const int status = Zv_CopyBitmapRect(&copy, &bitmap, left, top, width, height);
  std::swap(bitmap, static_cast<BitmapHandle&>(copy));
  return status;
}

template <int perspective>
int store(BitmapHandle& bitmap) {
  return Zv_ChangeBitmapViewPerspective(nullptr, &bitmap, perspective);
}

struct Operation {
  const char* name;
  int (*run)(BitmapHandle& bitmap);
};

constexpr Operation operations[] = {
    {"flip", [](BitmapHandle& bitmap) { return Zv_FlipBitmap(&bitmap); }},
    {"reverse", [](BitmapHandle& bitmap) { return Zv_ReverseBitmap(&bitmap); }},
    {"quarter", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 90, ROTATE_RESIZE, zero); }},
    {"half", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 180, ROTATE_RESIZE, zero); }},
    {"three quarters", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 270, ROTATE_RESIZE, zero); }},
    {"turn within the size", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 90, 0, zero); }},
    {"fine turn", [](BitmapHandle& bitmap) { return Zv_RotateBitmap(&bitmap, 33, ROTATE_RESIZE, zero); }},
    {"shear along", [](BitmapHandle& bitmap) { return Zv_ShearBitmap(&bitmap, 4000, 1, zero); }},
    {"shear across", [](BitmapHandle& bitmap) { return Zv_ShearBitmap(&bitmap, -2000, 0, zero); }},
    {"upright", store<VIEW_UPRIGHT>},
    {"bottom up", store<VIEW_BOTTOM_UP>},
    {"turned", store<VIEW_TURNED_270>},
    {"larger", [](BitmapHandle& bitmap) { return Zv_SizeBitmap(&bitmap, 3 * bitmap.Width, 3 * bitmap.Height, 0); }},
    {"cut", [](BitmapHandle& bitmap) { return Zv_TrimBitmap(&bitmap, 3, 2, 14, 9); }},
    {"copy", copyRect<0, 0, 23, 17>},
    {"copy of a part", copyRect<4, 2, 7, 4>},
    {"copy beyond the edges", copyRect<-3, -5, 30, 30>},
    {"copy of the corner", copyRect<9, 3, 30, 30>},
    {"lower", [](BitmapHandle& bitmap) { return Zv_ChangeBitmapHeight(&bitmap, 5); }},
    {"a single row", [](BitmapHandle& bitmap) { return Zv_ChangeBitmapHeight(&bitmap, 1); }},
    {"higher", [](BitmapHandle& bitmap) { return Zv_ChangeBitmapHeight(&bitmap, 25); }},
};

void expectFollows(BitmapHandle& bitmap, const Operation& operation) {
  // A system region kept from before must not survive.
  HRGN region = nullptr;
  ASSERT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, &region), KSUCCESS);
  DeleteObject(region);

  ASSERT_EQ(operation.run(bitmap), KSUCCESS);
  EXPECT_EQ(Zv_BitmapHasRgn(&bitmap), 1);
  EXPECT_TRUE(isWellFormed(bitmap));
  const Picture picture = pictureOf(bitmap);
  PointSet ones(bitmap.Width, bitmap.Height);
  ones.fill([&](int x, int y) { return picture.at(x, y) != 0; });
  EXPECT_EQ(pointsOf(bitmap), ones);
  ASSERT_EQ(Zv_GetBitmapRgnHandle(&bitmap, nullptr, &region), KSUCCESS);
  ones.fill([&](int x, int y) { return PtInRegion(region, x, y) != 0; });
  EXPECT_EQ(ones, pointsOf(bitmap));
  DeleteObject(region);
}

TEST(RegionFollowsPixels, ThroughEveryOperation) {
  std::mt19937 random(21);
  for (const int perspective : {1, 2, 4, 8}) {
    for (const Operation& operation : operations) {
      SCOPED_TRACE(operation.name + std::string(", perspective ") + std::to_string(perspective));
      RegionBitmap bitmap(23, 17, perspective);
      fillWithNoise(bitmap, random);
      ASSERT_EQ(Zv_SetBitmapRgnColor(&bitmap, 0x01000001, CombineSet), KSUCCESS);
      expectFollows(bitmap, operation);
    }
  }
}

// As above for a region whose bounds are wider than its pixels: of a shape whose upper row vanishes, and with it the
// last columns. What is cut or turned away leaves an empty region, not none.
TEST(RegionFollowsPixels, WithLooseBounds) {
  const RegionXForm flat = {0, 1, 1, 1, 2, 0, 0};
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name);
    RegionBitmap bitmap(23, 17, 0);
    HRGN shape = CreateRectRgn(0, 4, 22, 5);
    HRGN lower = CreateRectRgn(1, 5, 3, 6);
    CombineRgn(shape, shape, lower, RGN_OR);
    ASSERT_EQ(Zv_SetBitmapRgnHandle(&bitmap, &flat, shape, CombineSet), KSUCCESS);
    DeleteObject(lower);
    DeleteObject(shape);
    RECT bounds = {};
    ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
    EXPECT_EQ(bounds, (RECT{0, 2, 22, 3}));
    ASSERT_EQ(Zv_FillBitmap(&bitmap, 0x01000001), KSUCCESS);
    expectFollows(bitmap, operation);
  }
}

}  // namespace
}  // namespace zavotest
