// Pixel storage in memory: sections and run-length rows.
#include <zavo.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <span>

#include "core/row_table.h"
#include "support/platform_watch.h"
#include "support/row_storage_checks.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr int runLength = ALLOC_MEMORY | ALLOC_RUNLENGTH;

TEST(AllocateBitmap, MemoryTypeDepthAndSizeDecide) {
  constexpr unsigned runs = BMF_MEMORY | BMF_RUNLENGTH;
  const struct {
    int memoryType, width, height, bits, status;
    unsigned flags;
  } cases[] = {{1, 10, 10, 1, KSUCCESS, BMF_MEMORY},
               {128, 10, 10, 8, KSUCCESS, BMF_MEMORY},
               {256, 10, 10, 24, KSUCCESS, BMF_MEMORY},
               {0x200, 10, 10, 1, KSUCCESS, runs},
               {0x201, 10, 10, 1, KSUCCESS, runs},
               {0x3FF, 10, 10, 1, KSUCCESS, runs},
               {0x201, 10, 10, 8, KSUCCESS, BMF_MEMORY},
               {768, 10, 10, 24, KSUCCESS, BMF_MEMORY},
               {0x200, 10, 10, 8, KERR_BAD_PARAMETER, 0},
               {0, 10, 10, 1, KERR_BAD_PARAMETER, 0},
               {2, 10, 10, 24, KERR_BAD_PARAMETER, 0},
               {129, 10, 10, 24, KERR_BAD_PARAMETER, 0},
               {-1, 10, 10, 24, KERR_BAD_PARAMETER, 0},
               {1, 0, 10, 24, KERR_EMPTY, 0},
               {1, 10, 0, 24, KERR_EMPTY, 0},
               {1, -10, 10, 24, KERR_NO_MEMORY, 0},
               {1, 10, -10, 24, KERR_NO_MEMORY, 0},
               {1, -10, -10, 24, KERR_NO_MEMORY, 0},
               {1, 40000, 40000, 32, KERR_NO_MEMORY, 0},   // 6.4e9 bytes, which wrap to 2.1e9
               {1, 0x20000001, 1, 32, KERR_NO_MEMORY, 0},  // a row that wraps to 4 bytes
               {1, 0x7FFFFFFF, 2, 1, KSUCCESS, BMF_MEMORY}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "type " << c.memoryType << ", " << c.width << " x " << c.height << " of "
                                    << c.bits << " bits");
    TestBitmap bitmap;
    Zv_InitBitmap(&bitmap, c.width, c.height, c.bits);
    EXPECT_EQ(Zv_AllocateBitmap(&bitmap, c.memoryType), c.status);
    EXPECT_EQ(bitmap.allocated(), c.status == KSUCCESS);
    if (c.status != KSUCCESS) continue;
    EXPECT_EQ(bitmap.Flags & ~static_cast<unsigned>(BMF_ALLOCATED), c.flags);
    const auto bytes = c.width == 10 ? bytesOf(bitmap) : std::vector<uint8_t>();
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<int>(bytes.size()));
  }
  EXPECT_EQ(Zv_AllocateBitmap(nullptr, ALLOC_MEMORY), KERR_BAD_BITMAP);
  BitmapHandle bitmap;
  EXPECT_EQ(Zv_CreateBitmap(&bitmap, runLength, 10, 10, 1, 0, nullptr, 1), KSUCCESS);
  BitmapHandle before = bitmap;
  EXPECT_EQ(Zv_AllocateBitmap(&bitmap, 2), KERR_BAD_PARAMETER);
  EXPECT_EQ(bitmap.Flags & BMF_ALLOCATED, 0u) << "storage it had is no longer its own";
  Zv_FreeBitmap(&before);
}

TEST(ChangeBitmapHeight, KeepsRowsAndAddsZeros) {
  checkHeightChanges(ALLOC_MEMORY);
  checkHeightChanges(runLength);
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

TEST(RunLengthStorage, HeapSizes) {
  constexpr unsigned step = 0x40000;
  const struct {
    int width, height;
    unsigned heapBytes;
  } cases[] = {
      {1000, 1000, step}, {32, (step - 12) * 2, step}, {32, (step - 11) * 2, 0x400000}, {20000, 20000, 0x400000}};
  for (const auto& c : cases) {
    TestBitmap bitmap(c.width, c.height, 1, ALLOC_RUNLENGTH);
    ASSERT_TRUE(bitmap.allocated());
    EXPECT_EQ(bitmap.DataSize, static_cast<unsigned>(c.height) * bitmap.BytesPerLine) << "until rows are written";
    const zavo::RowTable& table = zavo::rowTable(bitmap);
    EXPECT_EQ(table.heap->totalBytes, c.heapBytes);
    EXPECT_EQ(table.scratchBytes, static_cast<unsigned>(c.width) * 2 + 2);

    EXPECT_EQ(Zv_TrimBitmapHeap(&bitmap), 1);
    EXPECT_EQ(bitmap.DataSize, 36u + 152u);
    EXPECT_EQ(Zv_TrimBitmapHeap(&bitmap), 0) << "nothing left to give back";
    EXPECT_EQ(Zv_GrowBitmapHeap(&bitmap, 100), 1);
    EXPECT_EQ(bitmap.DataSize, step);
    EXPECT_EQ(Zv_GrowBitmapHeap(&bitmap, step), 1);
    EXPECT_EQ(bitmap.DataSize, 2 * step);
    EXPECT_EQ(Zv_GrowBitmapHeap(&bitmap, 0xFFFFFFFF), 0) << "more than 32 bits can say";
    const Refusal refusal("GlobalReAlloc", 1, Repeat::fromThenOn);
    EXPECT_EQ(Zv_GrowBitmapHeap(&bitmap, 10 * step), 0);
    EXPECT_EQ(Zv_TrimBitmapHeap(&bitmap), 0);
    EXPECT_EQ(bitmap.DataSize, 2 * step);
  }
  TestBitmap none, plain(8, 8, 1);
  for (BitmapHandle* bitmap : std::initializer_list<BitmapHandle*>{nullptr, &none, &plain}) {
    EXPECT_EQ(Zv_TrimBitmapHeap(bitmap), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GrowBitmapHeap(bitmap, 1), KERR_BAD_PARAMETER);
  }
}

// The heap's blocks follow one another to its end, but for 24 bytes that each trim leaves, and are linked both ways.
// Free ones are never side by side and all on the free list; the used ones are those of the rows, not much larger than
// they.
void expectWholeHeap(const BitmapHandle& bitmap) {
  const zavo::RowTable& table = zavo::rowTable(bitmap);
  const auto blockAt = [&](uint32_t offset) {
    return *reinterpret_cast<const zavo::RunHeapBlock*>(reinterpret_cast<const uint8_t*>(table.heap) + offset);
  };
  std::set<uint32_t> freeBlocks, listed, usedBlocks, rows;
  uint32_t previous = 0, end = 12;
  for (uint32_t offset = 12; offset != 0; offset = blockAt(offset).next) {
    const zavo::RunHeapBlock block = blockAt(offset);
    ASSERT_EQ(offset, end);
    ASSERT_EQ(block.previous, previous);
    ASSERT_FALSE(block.inUse == 0 && freeBlocks.contains(previous));
    ASSERT_TRUE(block.inUse == 0 || block.payloadBytes % 4 == 0);
    ASSERT_NE(block.payloadBytes, 0u);
    (block.inUse == 0 ? freeBlocks : usedBlocks).insert(offset);
    previous = offset;
    end = offset + 24 + block.payloadBytes;
  }
  ASSERT_EQ(table.heap->lastBlock, previous);
  ASSERT_EQ((table.heap->totalBytes - end) % 24, 0u);
  previous = 0;
  for (uint32_t offset = table.heap->firstFree; offset != 0; offset = blockAt(offset).nextFree) {
    ASSERT_EQ(blockAt(offset).previousFree, previous);
    ASSERT_TRUE(listed.insert(offset).second);
    previous = offset;
  }
  ASSERT_EQ(listed, freeBlocks);
  for (const auto& [block, entries] : std::span(table.rows, static_cast<size_t>(bitmap.Height))) {
    if (block == 0) continue;
    rows.insert(block);
    ASSERT_LE(2 * entries, blockAt(block).payloadBytes);
    ASSERT_GE(2 * entries + 3 + 24, blockAt(block).payloadBytes);
  }
  ASSERT_EQ(rows, usedBlocks);
}

TEST(RunLengthStorage, HeapStaysWholeInRandomUse) {
  constexpr unsigned seed = 8;
  std::mt19937 random(seed);
  TestBitmap bitmap(6000, 20, 1, runLength);
  std::vector<uint8_t> model(bitmap.BytesPerLine * 20);
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step);
    const unsigned choice = random() % 20;
    if (choice == 0) {
      Zv_TrimBitmapHeap(&bitmap);
    } else if (choice == 1) {
      ASSERT_EQ(Zv_GrowBitmapHeap(&bitmap, random() % 100000), 1);
    } else if (choice == 2) {
      ASSERT_EQ(Zv_ChangeBitmapHeight(&bitmap, static_cast<int>(1 + random() % 40)), KSUCCESS);
      model.resize(bitmap.BytesPerLine * static_cast<unsigned>(bitmap.Height));
    } else {
      // From a few runs, where splitting a block changes its mind, to rows that make the heap grow.
      const unsigned row = random() % static_cast<unsigned>(bitmap.Height);
      uint8_t* bits = model.data() + row * bitmap.BytesPerLine;
      const unsigned dense = random() % 4 != 0 ? random() % 8 : random() % 750;
      std::fill_n(bits, 750, uint8_t{0});
      for (unsigned i = 0; i < dense; ++i) bits[i] = static_cast<uint8_t>(random());
      ASSERT_EQ(Zv_PutBitmapRow(&bitmap, bits, row, bitmap.BytesPerLine), static_cast<int>(bitmap.BytesPerLine));
    }
    expectWholeHeap(bitmap);
    ASSERT_EQ(bytesOf(bitmap), model);
  }
}

TEST(LockBitmap, LeavesMemoryThatIsAlwaysAddressableAlone) {
  TestBitmap section(10, 10, 8), rows(10, 10, 1, runLength);
  for (BitmapHandle* bitmap : std::initializer_list<BitmapHandle*>{&section, &rows}) {
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
