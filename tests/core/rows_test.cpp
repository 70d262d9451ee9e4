// Rows of memory sections; rows of run-length storage with what is peculiar to them.
#include <zavo.h>

#include <functional>
#include <gtest/gtest.h>

#include "support/refusals.h"
#include "support/row_storage_checks.h"
#include "support/run_model.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr int runLength = ALLOC_MEMORY | ALLOC_RUNLENGTH;

TEST(Rows, FollowPlainModels) {
  checkRowAccess(ALLOC_MEMORY);
  for (const int memoryType : {int{ALLOC_MEMORY}, runLength}) {
    SCOPED_TRACE(memoryType);
    checkCompressedRows(memoryType);
    checkSegments(memoryType);
  }
}

TEST(Rows, RefuseWhatTheyCannotReach) {
  TestBitmap none, deep(20, 2, 8);
  uint8_t bytes[8] = {};
  const unsigned whole[] = {0, 1};
  EXPECT_EQ(Zv_GetBitmapRow(nullptr, bytes, 0, 1), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_PutBitmapRow(nullptr, bytes, 0, 1), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_PutBitmapRowSegments(nullptr, bytes, 0, 0, whole, 2, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRow(&none, bytes, 0, 1), KERR_NO_MEMORY);
  EXPECT_EQ(Zv_PutBitmapRow(&none, bytes, 0, 1), KERR_NO_MEMORY);
  EXPECT_EQ(Zv_PutBitmapRowSegments(&none, bytes, 0, 0, whole, 2, 0), KERR_NO_MEMORY);
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&none, nullptr, bytes, 0, 1), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&deep, nullptr, bytes, 0, 1), KERR_BAD_BPP);
  for (const int memoryType : {int{ALLOC_MEMORY}, runLength}) {
    TestBitmap bitmap(20, 2, 1, memoryType);
    EXPECT_EQ(Zv_GetBitmapRow(&bitmap, nullptr, 0, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_PutBitmapRow(&bitmap, nullptr, 0, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, nullptr, 0, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, nullptr, 0, 0, whole, 2, 0), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, nullptr, 0, 0, nullptr, 0, 0), KSUCCESS);
  }
  TestBitmap runs(20, 2, 1, runLength);
  EXPECT_EQ(Zv_GetBitmapRowCol(&runs, bytes, 0, 24, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapRowCol(&runs, bytes, 0, 24, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRowCol(&runs, bytes, 0, 23, 1), 1) << "rounded down to 16";
  EXPECT_EQ(Zv_GetBitmapRow(&runs, bytes, 2, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapRow(&runs, bytes, 2, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapRowSegments(&runs, bytes, 2, 0, whole, 2, 0), KERR_BAD_PARAMETER);
}

// The stored record of row 0, of as many bytes as the expected one.
void expectRecord(BitmapHandle& bitmap, const Bytes& expected) {
  Bytes stored(expected.size());
  ASSERT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, stored.data(), 0, 1), KSUCCESS);
  ASSERT_EQ(stored, expected);
}

TEST(RunLengthRows, SegmentsBeyondTheRowAreCut) {
  TestBitmap bitmap(20, 1, 1, runLength);
  const uint8_t ones[] = {0xFF, 0xFF, 0xFF, 0xFF};
  const unsigned wild[] = {4, 8, 6, 10, 2, 3, 5, 5, 7, 6, 15, 32, 0xFFFFFFFF, 0, 3, 0xFFFFFFFF};
  EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, ones, 0, 0, wild, 14, 0), KSUCCESS);
  expectRecord(bitmap, record({4, 6, 5, 5}));
}

TEST(RunLengthRows, PiecesOfEveryColumnAndLength) {
  std::mt19937 random(31);
  for (int width = 1; width <= 130; width += width < 40 ? 1 : 7) {
    TestBitmap bitmap(width, 1, 1, runLength);
    ASSERT_TRUE(bitmap.allocated());
    Pixels model(static_cast<size_t>(width), false);
    for (unsigned column = 0; column < static_cast<unsigned>(width); column += 1 + column / 16) {
      for (unsigned bytes = 1; column / 8 + bytes <= bitmap.BytesPerLine; ++bytes) {
        SCOPED_TRACE(testing::Message() << "width " << width << " column " << column << " bytes " << bytes);
        const Pixels piece = randomPixels(random, bytes * 8);
        ASSERT_EQ(Zv_PutBitmapRowCol(&bitmap, packed(piece).data(), 0, column, bytes), static_cast<int>(bytes));
        for (size_t i = 0, at = column / 8 * 8; i < piece.size() && at < model.size(); ++i, ++at) model[at] = piece[i];
        Bytes expected = packed(part(model, column / 8 * 8, bytes * 8)), read(bytes + 1, filler);
        expected.push_back(filler);
        ASSERT_EQ(Zv_GetBitmapRowCol(&bitmap, read.data(), 0, column, bytes), static_cast<int>(bytes));
        ASSERT_EQ(read, expected);
        expectRecord(bitmap, recordOf(model));  // runs of one colour are joined
        ASSERT_EQ(Zv_ReverseBitmap(&bitmap), KSUCCESS);
        std::reverse(model.begin(), model.end());
        expectRecord(bitmap, recordOf(model));
      }
    }
  }
}

TEST(RunLengthRows, LongReadsRepeatTheRowAndLongWritesGoOn) {
  TestBitmap bitmap(40, 3, 1, runLength);
  const Bytes written = {1, 2, 3, 4, 5, 0, 0, 0, 11, 12, 13, 14, 15, 0, 0, 0};
  EXPECT_EQ(Zv_PutBitmapRow(&bitmap, written.data(), 0, 16), 16);
  Bytes read(16);
  EXPECT_EQ(Zv_GetBitmapRow(&bitmap, read.data(), 0, 16), 16);
  EXPECT_EQ(read, (Bytes{1, 2, 3, 4, 5, 0, 0, 0, 1, 2, 3, 4, 5, 0, 0, 0}));
  EXPECT_EQ(Zv_GetBitmapRowCol(&bitmap, read.data(), 1, 9, 16), 16);
  EXPECT_EQ(read, (Bytes{12, 13, 14, 15, 0, 0, 0, 11, 12, 13, 14, 15, 0, 0, 0, 11}));
  EXPECT_EQ(Zv_PutBitmapRow(&bitmap, written.data(), 2, 16), 8) << "the bitmap ends";
}

TEST(RunLengthRows, RowsWiderThanARunHolds) {
  constexpr unsigned width = 150001;
  TestBitmap bitmap(width, 1, 1, runLength);
  ASSERT_TRUE(bitmap.allocated());
  Pixels model(width, false);
  expectRecord(bitmap, recordOf(model));
  const Bytes piece = record({32767, 0, 32767, 0, 32767, 0, 32767, 0, 18933});
  Bytes read(piece.size());
  EXPECT_EQ(Zv_GetBitmapRowColCompressed(&bitmap, nullptr, read.data(), 0, 0, width), KSUCCESS);
  EXPECT_EQ(read, piece) << "a blank row has shorter runs when it is read as a piece";
  for (const auto& [start, count, set] : {std::tuple{0u, width, true}, std::tuple{70000u, 9u, false},
                                          std::tuple{3u, 69990u, false}, std::tuple{0u, width, false}}) {
    ASSERT_EQ(Zv_PutBitmapRowColCompressed(&bitmap, nullptr, recordOf(Pixels(count, set)).data(), 0, start, count),
              KSUCCESS);
    std::fill_n(model.begin() + start, count, set);
    expectRecord(bitmap, recordOf(model));
  }
  // The most runs there can be.
  for (unsigned i = 0; i < width; ++i) model[i] = i % 2 == 0;
  const Bytes bits = packed(model);
  ASSERT_EQ(Zv_PutBitmapRow(&bitmap, bits.data(), 0, static_cast<unsigned>(bits.size())),
            static_cast<int>(bits.size()));
  expectRecord(bitmap, recordOf(model));
}

TEST(RunLengthRows, StoredRunsAddUpToTheWidth) {
  TestBitmap bitmap(20, 1, 1, runLength);
  const struct {
    std::vector<uint16_t> given, stored;
  } cases[] = {{{}, {20}},
               {{3, 4}, {3, 4, 13}},
               {{0, 30}, {0, 20}},
               {{5, 5, 100, 7}, {5, 5, 10}},
               {{0, 0, 0, 0, 8, 12}, {0, 0, 0, 0, 8, 12}}};
  for (const auto& c : cases) {
    ASSERT_EQ(Zv_PutBitmapRowCompressed(&bitmap, nullptr, record(c.given).data(), 0, 1), KSUCCESS);
    expectRecord(bitmap, record(c.stored));
  }
}

// Rows that fill the first heap, so that the next one makes it grow.
TEST(RunLengthRows, ARowTheHeapCannotHoldStaysAsItWas) {
  constexpr unsigned width = 60000;
  const Bytes dense(width / 8, 0xAA);
  const Bytes denseRecord = recordOf(unpacked(dense.data(), width));
  const unsigned whole[] = {0, width};
  const std::function<int(BitmapHandle&)> writes[] = {
      [&](BitmapHandle& bitmap) { return Zv_PutBitmapRow(&bitmap, dense.data(), 2, width / 8); },
      [&](BitmapHandle& bitmap) { return Zv_PutBitmapRowSegments(&bitmap, dense.data(), 2, 0, whole, 2, 0); },
      [&](BitmapHandle& bitmap) { return Zv_PutBitmapRowCompressed(&bitmap, nullptr, denseRecord.data(), 2, 1); },
      [&](BitmapHandle& bitmap) {
        return Zv_PutBitmapRowColCompressed(&bitmap, nullptr, denseRecord.data(), 2, 1, width - 1);
      }};
  for (const auto& write : writes) {
    for (const bool blank : {true, false}) {
      refuseEachResource({}, [&](RefusalRound& round) {
        TestBitmap bitmap(width, 3, 1, runLength);
        Zv_PutBitmapRow(&bitmap, dense.data(), 0, width / 8);
        Zv_PutBitmapRow(&bitmap, dense.data(), 1, width / 8);
        if (!blank) Zv_PutBitmapRow(&bitmap, dense.data(), 2, 100);
        const unsigned heapBytes = bitmap.DataSize;
        EXPECT_EQ(heapBytes, 0x40000u);
        round.keeps(bitmap);
        bitmap.DataSize = 0;
        const bool written = round.run([&] { return write(bitmap); }) > 0;
        EXPECT_EQ(bitmap.DataSize, written ? heapBytes + 0x40000 : heapBytes) << "set whatever the result";
      });
    }
  }
}

}  // namespace
