// Progress, stopping and refused arguments of every operation on whole bitmaps.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "support/progress_log.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

// The percentages reported for so many steps of work, after what is done in one step up to `base`: above 100 steps only
// changes.
std::vector<int> percents(int steps, int base = 0) {
  std::vector<int> reported = {0};
  if (base != 0) reported.push_back(base);
  for (int step = 1; step <= steps; ++step) {
    const int percent = base + (100 - base) * step / steps;
    if (steps <= 100 || percent != reported.back()) reported.push_back(percent);
  }
  return reported;
}

struct Operation {
  const char* name;
  int (*run)(BitmapHandle& image);  // 40 x 30 pixels
  std::vector<int> percents;
  bool isDoneInPlace = false;
};

const Operation operations[] = {
    {"flip", [](BitmapHandle& image) { return Zv_FlipBitmap(&image); }, percents(15), true},
    {"reverse", [](BitmapHandle& image) { return Zv_ReverseBitmap(&image); }, percents(30), true},
    {"100 rows", [](BitmapHandle& image) { return Zv_SizeBitmap(&image, 50, 100, 0); }, percents(100)},
    {"101 rows", [](BitmapHandle& image) { return Zv_SizeBitmap(&image, 50, 101, 0); }, percents(101)},
    {"250 rows", [](BitmapHandle& image) { return Zv_SizeBitmap(&image, 50, 250, 0); }, percents(250)},
    {"same size", [](BitmapHandle& image) { return Zv_SizeBitmap(&image, 40, 30, 0); }, {}},
    {"favour black", [](BitmapHandle& image) { return Zv_SizeBitmap(&image, 9, 7, SIZE_FAVOR_BLACK); }, percents(7)},
    {"resample down", [](BitmapHandle& image) { return Zv_ResampleBitmap(&image, 6, 3); }, percents(3)},
    {"resample up", [](BitmapHandle& image) { return Zv_ResampleBitmap(&image, 50, 40); }, percents(40)},
    {"shear", [](BitmapHandle& image) { return Zv_ShearBitmap(&image, 2000, 1, 0); }, percents(30)},
    {"shear back", [](BitmapHandle& image) { return Zv_ShearBitmap(&image, -2000, 1, 0); }, percents(30, 5)},
    {"quarter turn", [](BitmapHandle& image) { return Zv_RotateBitmap(&image, 90, ROTATE_RESIZE, 0); }, percents(1)},
    {"half turn", [](BitmapHandle& image) { return Zv_RotateBitmap(&image, 180, 0, 0); }, percents(30)},
    {"whole turn", [](BitmapHandle& image) { return Zv_RotateBitmap(&image, 360, 0, 0); }, {}},
    {"turn by 30 degrees", [](BitmapHandle& image) { return Zv_RotateBitmap(&image, 30, 0, 0); }, percents(30)},
    {"turned", [](BitmapHandle& image) { return Zv_ChangeBitmapViewPerspective(nullptr, &image, VIEW_TURNED_90); }, {}},
};

// A region takes part without being reported, and what is no part of the picture stays.
TEST(Progress, IsReportedAndCanStop) {
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name);
    {
      TestBitmap bitmap(40, 30, 1);
      const RECT part = {3, 5, 20, 10};
      ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, CombineSet), KSUCCESS);
      bitmap.DitheringMethod = 3;
      bitmap.Reserved1 = 99;
      ASSERT_EQ(Zv_StartDithering(&bitmap, nullptr, 2), KSUCCESS);
      const void* dithering = bitmap.DitherState;
      const ProgressLog log;
      EXPECT_EQ(operation.run(bitmap), KSUCCESS);
      EXPECT_EQ(log.percents, operation.percents);
      EXPECT_EQ(bitmap.DitheringMethod, 3);
      EXPECT_EQ(bitmap.Reserved1, 99u);
      EXPECT_EQ(bitmap.DitherState, dithering);
      Zv_StopDithering(&bitmap);
    }
    TestBitmap bitmap(40, 30, 1);
    const Snapshot snapshot(bitmap);
    for (size_t call = 1; call <= operation.percents.size(); ++call) {
      const ProgressLog log(call, 42);
      EXPECT_EQ(operation.run(bitmap), 42);
      EXPECT_EQ(log.percents.size(), call);
      if (!operation.isDoneInPlace) {
        ASSERT_TRUE(snapshot.unchanged());
      }
    }
  }
}

TEST(Arguments, ThatCannotBeAreRefused) {
  TestBitmap bitmap(10, 7, 24), other(4, 4, 8), wide(10900, 40, 24);
  BitmapHandle empty{};
  const Snapshot snapshot(bitmap), wideSnapshot(wide);
  static constexpr struct {
    int width, height, status;
  } sizes[] = {{0, 5, KERR_EMPTY},
               {5, 0, KERR_EMPTY},
               {0, 0, KERR_EMPTY},
               {-1, 5, KERR_NO_MEMORY},
               {5, -1, KERR_NO_MEMORY},
               {-5, -5, KERR_NO_MEMORY},
               {70000, 70000, KERR_NO_MEMORY},
               {INT_MAX, INT_MAX, KERR_NO_MEMORY},
               {INT_MIN, INT_MIN, KERR_NO_MEMORY}};
  for (const auto& size : sizes) {
    SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
    EXPECT_EQ(Zv_SizeBitmap(&bitmap, size.width, size.height, 0), size.status);
    EXPECT_EQ(Zv_ResampleBitmap(&bitmap, size.width, size.height), size.status);
  }
  for (BitmapHandle* bad : {static_cast<BitmapHandle*>(nullptr), &empty}) {
    EXPECT_EQ(Zv_SizeBitmap(bad, 5, 5, 0), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_ResampleBitmap(bad, 4, 4), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_ResizeBitmap(bad, &other), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_ResizeBitmap(&other, bad), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_FlipBitmap(bad), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_ReverseBitmap(bad), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_ShearBitmap(bad, 100, 1, 0), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_RotateBitmap(bad, 1, 0, 0), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_RotateBitmapFine(bad, 100, 0, 0), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_IntRotateBitmapFine(bad, 100, 0, 0), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_RotateBitmapViewPerspective(bad, 90), KERR_BAD_BITMAP);
    EXPECT_EQ(Zv_ChangeBitmapViewPerspective(nullptr, bad, VIEW_UPRIGHT), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_ResizeBitmap(&other, &bitmap), KERR_BAD_PARAMETER) << "of another depth";
  EXPECT_EQ(Zv_RotateBitmapViewPerspective(&bitmap, 45), KERR_BAD_PARAMETER);
  for (const int angle : {4501, -4501}) EXPECT_EQ(Zv_ShearBitmap(&bitmap, angle, 1, 0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ShearBitmap(&wide, 4500, 1, 0), KERR_BAD_PARAMETER) << "rows of more than 32768 bytes";
  EXPECT_EQ(Zv_MirrorLine(nullptr, 8, 8), KERR_BAD_PARAMETER);
  EXPECT_TRUE(snapshot.unchanged() && wideSnapshot.unchanged());
}

TEST(Arguments, OfRowScalingThatCannotBe) {
  ResizeState* state = nullptr;
  for (const int bad : {0, -1, INT_MIN}) {
    EXPECT_EQ(Zv_StartResize(bad, 5, 5, 5, &state), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_StartResize(5, bad, 5, 5, &state), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_StartResize(5, 5, bad, 5, &state), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_StartResize(5, 5, 5, bad, &state), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_StartResize(5, 5, 5, 5, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_StopResize(nullptr), KSUCCESS);
  ASSERT_EQ(Zv_StartResize(5, 7, 5, INT_MAX, &state), KSUCCESS);
  unsigned char row[8] = {};
  EXPECT_EQ(Zv_Resize(nullptr, 0, 8, nullptr, nullptr, state), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_Resize(row, 0, 8, nullptr, nullptr, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_Resize(row, 0, 15, nullptr, nullptr, state), KERR_BAD_BPP);
  for (const int number : {INT_MAX, INT_MIN, -1, -2, 6}) {
    EXPECT_GE(Zv_Resize(row, number, 8, nullptr, nullptr, state), INT_MAX / 7);
  }
  EXPECT_EQ(Zv_StopResize(state), KSUCCESS);
}

}  // namespace
