// The progress that fills report on the storage of a legacy host.
#include <zavo.h>

#include <gtest/gtest.h>
#include <vector>

#include "support/progress_log.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

TEST(LegacyFill, FilesReportEveryRow) {
  TestBitmap bitmap(37, 7, 5, ALLOC_DISK);
  {
    ProgressLog log;
    ASSERT_EQ(Zv_FillBitmap(&bitmap, 0x01000015), KSUCCESS);
    EXPECT_EQ(log.percents, std::vector<int>({0, 14, 28, 42, 57, 71, 85, 100}));
  }
  Picture expected(37, 7);
  for (auto& pixel : expected.pixels) pixel = 0x15;
  EXPECT_TRUE(pictureOf(bitmap) == expected);

  // Stopped after two rows of a region: these stay cleared.
  const RECT part = {3, 2, 30, 6};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, 1), KSUCCESS);
  {
    ProgressLog log(3, -99);
    EXPECT_EQ(Zv_ClearBitmap(&bitmap), -99);
    EXPECT_EQ(log.percents, std::vector<int>({0, 25, 50}));
  }
  for (int y = 2; y < 4; ++y) {
    for (int x = 3; x < 30; ++x) expected.at(x, y) = 0;
  }
  EXPECT_TRUE(pictureOf(bitmap) == expected);
}

TEST(LegacyFill, MemoryReportsItsBeginningAndItsEnd) {
  TestBitmap bitmap(37, 7, 24);
  ProgressLog log;
  ASSERT_EQ(Zv_FillBitmap(&bitmap, RGB(1, 2, 3)), KSUCCESS);
  EXPECT_EQ(log.percents, std::vector<int>({0, 100}));
  Picture expected(37, 7);
  for (auto& pixel : expected.pixels) pixel = 0x030201;
  EXPECT_TRUE(pictureOf(bitmap) == expected);
}

}  // namespace
