// Pixel storage in memory: sections and run-length rows.
#include <zavo.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

#include "core/row_table.h"
#include "support/platform_watch.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr int runLength = ALLOC_MEMORY | ALLOC_RUNLENGTH;
constexpr unsigned kindFlags = BMF_MEMORY | BMF_DISK | BMF_RUNLENGTH | BMF_LOCKED;

TEST(AllocateBitmap, MemoryTypeAndDepthChooseTheKind) {
  const struct {
    int memoryType, bits, status;
    unsigned flags;
  } cases[] = {{1, 1, KSUCCESS, BMF_MEMORY},
               {128, 8, KSUCCESS, BMF_MEMORY},
               {256, 24, KSUCCESS, BMF_MEMORY},
               {0x200, 1, KSUCCESS, BMF_MEMORY | BMF_RUNLENGTH},
               {0x201, 1, KSUCCESS, BMF_MEMORY | BMF_RUNLENGTH},
               {0x3FF, 1, KSUCCESS, BMF_MEMORY | BMF_RUNLENGTH},
               {0x201, 8, KSUCCESS, BMF_MEMORY},
               {768, 24, KSUCCESS, BMF_MEMORY},
               {0x200, 8, KERR_BAD_PARAMETER, 0},
               {0, 1, KERR_BAD_PARAMETER, 0},
               {2, 24, KERR_BAD_PARAMETER, 0},
               {129, 24, KERR_BAD_PARAMETER, 0},
               {-1, 24, KERR_BAD_PARAMETER, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "type " << c.memoryType << ", " << c.bits << " bits");
    TestBitmap bitmap;
    Zv_InitBitmap(&bitmap, 10, 10, c.bits);
    EXPECT_EQ(Zv_AllocateBitmap(&bitmap, c.memoryType), c.status);
    EXPECT_EQ((bitmap.Flags & BMF_ALLOCATED) != 0, c.status == KSUCCESS);
    if (c.status == KSUCCESS) {
      EXPECT_EQ(bitmap.Flags & kindFlags, c.flags);
      const auto bytes = bytesOf(bitmap);
      EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<int>(bytes.size()));
    }
  }
}

TEST(AllocateBitmap, RefusesSizesItCannotHold) {
  const struct {
    int width, height, bits, status;
  } cases[] = {{0, 10, 24, KERR_EMPTY},
               {10, 0, 24, KERR_EMPTY},
               {-10, 10, 24, KERR_NO_MEMORY},
               {10, -10, 24, KERR_NO_MEMORY},
               {-10, -10, 24, KERR_NO_MEMORY},
               {40000, 40000, 32, KERR_NO_MEMORY},   // 6.4e9 bytes, which wrap to 2.1e9
               {0x20000001, 1, 32, KERR_NO_MEMORY},  // a row that wraps to 4 bytes
               {0x7FFFFFFF, 2, 1, KSUCCESS}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << " of " << c.bits << " bits");
    TestBitmap bitmap;
    Zv_InitBitmap(&bitmap, c.width, c.height, c.bits);
    EXPECT_EQ(Zv_AllocateBitmap(&bitmap, ALLOC_MEMORY), c.status);
    EXPECT_EQ((bitmap.Flags & BMF_ALLOCATED) != 0, c.status == KSUCCESS);
  }
  EXPECT_EQ(Zv_AllocateBitmap(nullptr, ALLOC_MEMORY), KERR_BAD_BITMAP);
}

TEST(ChangeBitmapHeight, KeepsRowsAndAddsZeros) {
  std::mt19937 random(5);
  for (const int memoryType : {int{ALLOC_MEMORY}, runLength}) {
    for (const int bits : {1, 3, 8, 24}) {
      for (const int height : {1, 4, 5, 6, 40}) {
        SCOPED_TRACE(testing::Message() << "type " << memoryType << ", " << bits << " bits, height " << height);
        TestBitmap bitmap(37, 5, bits, memoryType);
        fillWithNoise(bitmap, random);
        Picture expected = pictureOf(bitmap);
        bitmap.CachedRow = 4;
        bitmap.CachedRowOffset = 4 * bitmap.BytesPerLine;
        ASSERT_EQ(Zv_ChangeBitmapHeight(&bitmap, height), KSUCCESS);
        EXPECT_EQ(bitmap.CachedRow, height == 5 ? 4 : 0);
        EXPECT_EQ(bitmap.Height, height);
        if (memoryType != runLength) {
          EXPECT_EQ(bitmap.DataSize, bitmap.BytesPerLine * static_cast<unsigned>(height));
        }
        expected.pixels.resize(37u * static_cast<unsigned>(height));
        expected.height = height;
        EXPECT_TRUE(pictureOf(bitmap) == expected);
      }
    }
  }
}

TEST(ChangeBitmapHeight, RefusesWhatCannotBe) {
  TestBitmap none, bitmap(10, 10, 24), locked(10, 10, 8);
  EXPECT_EQ(Zv_ChangeBitmapHeight(nullptr, 5), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ChangeBitmapHeight(&none, 5), KERR_BAD_BITMAP);
  locked.Flags |= BMF_LOCKED;
  EXPECT_EQ(Zv_ChangeBitmapHeight(&locked, 5), KERR_BAD_PARAMETER);
  const Snapshot before(bitmap);
  for (const int height : {0, -1, 0x7FFFFFFF}) EXPECT_EQ(Zv_ChangeBitmapHeight(&bitmap, height), KERR_NO_MEMORY);
  EXPECT_TRUE(before.unchanged());
}

TEST(ChangeBitmapHeight, ShrinksRunLengthRowsEvenWhenRefused) {
  std::mt19937 random(7);
  TestBitmap bitmap(37, 11, 1, runLength);
  fillWithNoise(bitmap, random);
  Picture expected = pictureOf(bitmap);
  {
    const Refusal refusal("GlobalReAlloc", 1);
    EXPECT_EQ(Zv_ChangeBitmapHeight(&bitmap, 4), KERR_NO_MEMORY);
  }
  EXPECT_EQ(bitmap.Height, 4);
  expected.height = 4;
  expected.pixels.resize(4 * 37);
  EXPECT_TRUE(pictureOf(bitmap) == expected);
}

TEST(RunLengthStorage, HeapSizes) {
  constexpr unsigned step = 0x40000;
  const struct {
    int side;
    unsigned heapBytes;
  } cases[] = {{1000, step}, {20000, 0x400000}};
  for (const auto& c : cases) {
    TestBitmap bitmap(c.side, c.side, 1, ALLOC_RUNLENGTH);
    ASSERT_TRUE(bitmap.allocated());
    EXPECT_EQ(bitmap.DataSize, static_cast<unsigned>(c.side) * bitmap.BytesPerLine) << "until rows are written";
    const zavo::RowTable& table = zavo::rowTable(bitmap);
    EXPECT_EQ(table.heap->totalBytes, c.heapBytes);
    EXPECT_EQ(table.scratchBytes, static_cast<unsigned>(c.side) * 2 + 2);

    EXPECT_EQ(Zv_TrimBitmapHeap(&bitmap), 1);
    EXPECT_EQ(bitmap.DataSize, 36u + 152u);
    EXPECT_EQ(Zv_TrimBitmapHeap(&bitmap), 0) << "nothing left to give back";
    EXPECT_EQ(Zv_GrowBitmapHeap(&bitmap, 100), 1);
    EXPECT_EQ(bitmap.DataSize, step);
    EXPECT_EQ(Zv_GrowBitmapHeap(&bitmap, step), 1);
    EXPECT_EQ(bitmap.DataSize, 2 * step);
    const Refusal refusal("GlobalReAlloc", 1, Repeat::fromThenOn);
    EXPECT_EQ(Zv_GrowBitmapHeap(&bitmap, 10 * step), 0);
    EXPECT_EQ(Zv_TrimBitmapHeap(&bitmap), 0);
    EXPECT_EQ(bitmap.DataSize, 2 * step);
  }
  TestBitmap none, plain(8, 8, 1);
  for (BitmapHandle* bitmap :
       {static_cast<BitmapHandle*>(nullptr), static_cast<BitmapHandle*>(&none), static_cast<BitmapHandle*>(&plain)}) {
    EXPECT_EQ(Zv_TrimBitmapHeap(bitmap), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GrowBitmapHeap(bitmap, 1), KERR_BAD_PARAMETER);
  }
}

TEST(LockBitmap, LeavesMemoryThatIsAlwaysAddressableAlone) {
  TestBitmap section(10, 10, 8), rows(10, 10, 1, runLength);
  for (BitmapHandle* bitmap : {static_cast<BitmapHandle*>(&section), static_cast<BitmapHandle*>(&rows)}) {
    const BitmapHandle before = *bitmap;
    EXPECT_EQ(Zv_LockBitmap(bitmap), 0);
    EXPECT_EQ(Zv_LockBitmap(bitmap), 0);
    Zv_AccessBitmap(bitmap);
    EXPECT_EQ(memcmp(&before, bitmap, sizeof before), 0);
    Zv_UnlockBitmap(bitmap, 0);
    Zv_ReleaseBitmap(bitmap);
    EXPECT_EQ(memcmp(&before, bitmap, sizeof before), 0);
  }
}

}  // namespace
