// Copying and filling on the storage of a legacy host: global memory, which starts with anything, and temporary files.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "support/progress_log.h"
#include "support/refusals.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr int memoryTypes[] = {ALLOC_MEMORY, ALLOC_DISK};

TEST(LegacyCopying, CopiesBitmapsAndRectangles) {
  std::mt19937 random(1609);
  for (const int memoryType : memoryTypes) {
    for (const int bits : {1, 3, 8, 24}) {
      SCOPED_TRACE(testing::Message() << "memory type " << memoryType << ", " << bits << " bits");
      TestBitmap source(37, 9, bits, memoryType);
      fillWithNoise(source, random);
      const Picture picture = pictureOf(source);
      TestBitmap copy;
      ASSERT_EQ(Zv_CopyBitmap(&copy, &source), KSUCCESS);
      EXPECT_TRUE(pictureOf(copy) == picture);

      TestBitmap file(37, 9, bits, ALLOC_DISK);
      ASSERT_EQ(Zv_CopyBitmapData(&file, &source), KSUCCESS);
      EXPECT_TRUE(pictureOf(file) == picture);

      ASSERT_EQ(Zv_CopyBitmapRect(nullptr, &source, -5, -2, 60, 20), KSUCCESS);
      Picture expected(60, 20);
      for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 60; ++x) expected.at(x, y) = picture.orZero(x - 5, y - 2);
      }
      EXPECT_TRUE(pictureOf(source) == expected);
    }
  }
}

// A copy falls back to a file where there is no global memory; memory that cannot be locked is no success.
TEST(LegacyCopying, EveryRefusalLeavesThingsAsTheyWere) {
  refuseEachResource({.survived = {"GlobalAlloc"}, .leastPoints = 3}, [](RefusalRound& round) {
    TestBitmap source(37, 9, 8);
    round.keeps(source);
    TestBitmap copy;
    round.run([&] { return Zv_CopyBitmap(&copy, &source); });
  });
  for (unsigned n = 1; n <= 2; ++n) {
    TestBitmap source(37, 9, 24);
    TestBitmap copy(37, 9, 24);
    const Refusal refusal("GlobalLock", n);
    EXPECT_EQ(Zv_CopyBitmapData(&copy, &source), KERR_NO_MEMORY) << "lock " << n;
    EXPECT_NE(refusal.refused(), nullptr);
  }
}

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
