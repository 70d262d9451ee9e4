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

TEST(Rows, SectionAccess) {
  checkRowAccess(ALLOC_MEMORY);
}
TEST(Rows, SectionCompressed) {
  checkCompressedRows(ALLOC_MEMORY);
}
TEST(Rows, RunLengthCompressed) {
  checkCompressedRows(runLength);
}

TEST(Rows, SectionSegments) {
  checkSegments(ALLOC_MEMORY);
}
TEST(Rows, RunLengthSegments) {
  checkSegments(runLength);
}

TEST(Rows, SegmentExamples) {
  TestBitmap bitonal(8, 1, 1), deep(1, 1, 16);
  const uint8_t ones = 0xFF;
  const unsigned bits[] = {3, 5};
  EXPECT_EQ(Zv_PutBitmapRowSegments(&bitonal, &ones, 0, 0, bits, 2, 0), KSUCCESS);
  EXPECT_EQ(bitonal.Data[0], 0x18);
  const unsigned whole[] = {0, 1};
  const uint8_t alpha[] = {0x00, 0x80}, color[] = {0x34, 0x12};
  EXPECT_EQ(Zv_PutBitmapRow(&deep, alpha, 0, 2), 2);
  EXPECT_EQ(Zv_PutBitmapRowSegments(&deep, color, 0, 0, whole, 2, 1), KSUCCESS);
  EXPECT_EQ(deep.Data[0], 0x34);
  EXPECT_EQ(deep.Data[1], 0x92);
}

TEST(Rows, SegmentsOfNothing) {
  for (const int memoryType : {int{ALLOC_MEMORY}, runLength}) {
    TestBitmap bitmap(20, 2, 1, memoryType);
    const uint8_t ones[4] = {0xFF, 0xFF, 0xFF, 0xFF};
    const unsigned empty[] = {5, 5, 7, 6};
    EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, ones, 0, 0, empty, 4, 0), KSUCCESS);
    EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, nullptr, 0, 0, nullptr, 0, 0), KSUCCESS);
    EXPECT_EQ(pictureOf(bitmap), Picture(20, 2));
    EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, nullptr, 0, 0, empty, 4, 0), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_PutBitmapRowSegments(nullptr, ones, 0, 0, empty, 4, 0), KERR_BAD_BITMAP);
  }
  TestBitmap none;
  const uint8_t byte = 0;
  const unsigned whole[] = {0, 1};
  EXPECT_EQ(Zv_PutBitmapRowSegments(&none, &byte, 0, 0, whole, 2, 0), KERR_NO_MEMORY);
}

TEST(RunLengthRows, SegmentsBeyondTheRowAreCut) {
  TestBitmap bitmap(20, 1, 1, runLength);
  const uint8_t ones[] = {0xFF, 0xFF, 0xFF, 0xFF};
  const unsigned wild[] = {4, 8, 6, 10, 2, 3, 15, 32, 0xFFFFFFFF, 0, 3, 0xFFFFFFFF};
  EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, ones, 0, 0, wild, 10, 0), KSUCCESS);
  Bytes stored(record({4, 6, 5, 5}).size());
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, stored.data(), 0, 1), KSUCCESS);
  EXPECT_EQ(stored, record({4, 6, 5, 5}));
  EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, ones, 1, 0, wild, 2, 0), KERR_BAD_PARAMETER);
}

TEST(Rows, ColumnsRoundDownToBytes) {
  const struct {
    int bits;
    unsigned column, byte;
  } cases[] = {{1, 13, 1}, {2, 13, 3}, {4, 13, 6}, {3, 5, 1}, {5, 5, 3}, {6, 5, 3}, {7, 5, 4}, {8, 5, 5}, {24, 5, 15}};
  for (const auto& c : cases) {
    TestBitmap bitmap(20, 1, c.bits);
    for (unsigned i = 0; i < bitmap.BytesPerLine; ++i) bitmap.Data[i] = static_cast<uint8_t>(i);
    uint8_t byte = filler;
    EXPECT_EQ(Zv_GetBitmapRowCol(&bitmap, &byte, 0, c.column, 1), 1);
    EXPECT_EQ(byte, c.byte) << c.bits << " bits";
  }
}

TEST(Rows, RefusesWhatItCannotReach) {
  TestBitmap none, rle(20, 2, 1, runLength);
  uint8_t bytes[8] = {};
  EXPECT_EQ(Zv_GetBitmapRow(nullptr, bytes, 0, 1), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_PutBitmapRow(nullptr, bytes, 0, 1), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRow(&none, bytes, 0, 1), KERR_NO_MEMORY);
  EXPECT_EQ(Zv_PutBitmapRow(&none, bytes, 0, 1), KERR_NO_MEMORY);
  EXPECT_EQ(Zv_GetBitmapRow(&rle, nullptr, 0, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRowCol(&rle, bytes, 0, 24, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapRowCol(&rle, bytes, 0, 24, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRowCol(&rle, bytes, 0, 23, 1), 1) << "rounded down to 16";
  EXPECT_EQ(Zv_GetBitmapRow(&rle, bytes, 2, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PutBitmapRow(&rle, bytes, 2, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&none, nullptr, bytes, 0, 1), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&rle, nullptr, nullptr, 0, 1), KERR_BAD_PARAMETER);
  TestBitmap deep(20, 2, 8);
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&deep, nullptr, bytes, 0, 1), KERR_BAD_BPP);
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
        const Pixels rest = part(model, column / 8 * 8, bytes * 8);
        Bytes expected = packed(rest), read(bytes + 1, filler);
        expected.push_back(filler);
        ASSERT_EQ(Zv_GetBitmapRowCol(&bitmap, read.data(), 0, column, bytes), static_cast<int>(bytes));
        ASSERT_EQ(read, expected);
        Bytes stored(recordOf(model).size());
        ASSERT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, stored.data(), 0, 1), KSUCCESS);
        ASSERT_EQ(stored, recordOf(model)) << "runs of one colour are joined";
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

TEST(RunLengthRows, BlankRows) {
  TestBitmap bitmap(100, 2, 1, runLength);
  Bytes buffer(record({100}).size());
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, buffer.data(), 0, 1), KSUCCESS);
  EXPECT_EQ(buffer, record({100}));
  EXPECT_EQ(Zv_GetBitmapRowColCompressed(&bitmap, nullptr, buffer.data(), 1, 90, 5), KSUCCESS);
  EXPECT_EQ(buffer, record({5}));

  TestBitmap wide(100000, 2, 1, runLength);
  for (const auto& [row, expected] :
       {std::pair{0u, record({65535, 0, 34465})}, std::pair{1u, record({65535, 0, 34465})}}) {
    buffer.assign(expected.size(), 0);
    EXPECT_EQ(Zv_GetBitmapRowCompressed(&wide, nullptr, buffer.data(), row, 1), KSUCCESS);
    EXPECT_EQ(buffer, expected);
  }
  const Bytes piece = record({32767, 0, 32767, 0, 32767, 0, 1699});
  buffer.assign(piece.size(), 0);
  EXPECT_EQ(Zv_GetBitmapRowColCompressed(&wide, nullptr, buffer.data(), 0, 0, 100000), KSUCCESS);
  EXPECT_EQ(buffer, piece);
}

TEST(RunLengthRows, RowsWiderThanARunHolds) {
  std::mt19937 random(32);
  constexpr unsigned width = 150001;
  TestBitmap bitmap(width, 1, 1, runLength);
  ASSERT_TRUE(bitmap.allocated());
  Pixels model(width, false);
  const auto check = [&] {
    Bytes bits(bitmap.BytesPerLine);
    ASSERT_EQ(Zv_GetBitmapRow(&bitmap, bits.data(), 0, bitmap.BytesPerLine), static_cast<int>(bitmap.BytesPerLine));
    ASSERT_EQ(unpacked(bits.data(), width), model);
    const Bytes expected = recordOf(model);
    Bytes stored(expected.size());
    ASSERT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, stored.data(), 0, 1), KSUCCESS);
    ASSERT_EQ(stored, expected);
  };
  for (const auto& [start, count, set] : {std::tuple{0u, width, true}, std::tuple{70000u, 9u, false},
                                          std::tuple{3u, 69990u, false}, std::tuple{0u, width, false}}) {
    const Pixels piece(count, set);
    ASSERT_EQ(Zv_PutBitmapRowColCompressed(&bitmap, nullptr, recordOf(piece).data(), 0, start, count), KSUCCESS);
    std::fill_n(model.begin() + start, count, set);
    check();
  }
  // The most runs there can be.
  for (unsigned i = 0; i < width; ++i) model[i] = i % 2 == 0;
  const Bytes bits = packed(model);
  ASSERT_EQ(Zv_PutBitmapRow(&bitmap, bits.data(), 0, static_cast<unsigned>(bits.size())),
            static_cast<int>(bits.size()));
  check();
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
    Bytes stored(record(c.stored).size());
    ASSERT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, stored.data(), 0, 1), KSUCCESS);
    EXPECT_EQ(stored, record(c.stored)) << testing::PrintToString(c.given);
  }
}

TEST(RunLengthRows, MirroredInPlace) {
  std::mt19937 random(33);
  for (int width = 1; width <= 70; ++width) {
    for (int round = 0; round < 8; ++round) {
      SCOPED_TRACE(testing::Message() << "width " << width << " round " << round);
      TestBitmap bitmap(width, 2, 1, runLength);
      const Pixels pixels = randomPixels(random, static_cast<size_t>(width));
      ASSERT_EQ(Zv_PutBitmapRowCompressed(&bitmap, nullptr, recordOf(pixels).data(), 0, 1), KSUCCESS);
      ASSERT_EQ(Zv_ReverseBitmap(&bitmap), KSUCCESS);
      Bytes expected = recordOf(Pixels(pixels.rbegin(), pixels.rend()));
      const Bytes blank = recordOf(Pixels(pixels.size(), false));
      append(expected, blank.data(), blank.size());
      Bytes stored(expected.size());
      ASSERT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, stored.data(), 0, 2), KSUCCESS);
      ASSERT_EQ(stored, expected);
    }
  }
}

TEST(RunLengthRows, WritesSetTheDataSizeToTheHeap) {
  TestBitmap bitmap(100, 2, 1, runLength);
  EXPECT_EQ(bitmap.DataSize, 2u * 16);
  const Bytes row(16, 0xAA);
  EXPECT_EQ(Zv_PutBitmapRow(&bitmap, row.data(), 0, 16), 16);
  EXPECT_EQ(bitmap.DataSize, 0x40000u);
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
        round.keeps(bitmap);
        bitmap.DataSize = 0;
        const bool written = round.run([&] { return write(bitmap); }) > 0;
        EXPECT_EQ(bitmap.DataSize, written ? heapBytes + 0x40000 : heapBytes) << "set whatever the result";
      });
    }
  }
}

}  // namespace
