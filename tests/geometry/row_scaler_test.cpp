// Scaling rows while they are streamed, forwards, backwards and in jumps.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

struct Scaler {
  Scaler(int oldWidth, int oldHeight, int newWidth, int newHeight) {
    EXPECT_EQ(Zv_StartResize(oldWidth, oldHeight, newWidth, newHeight, &state), KSUCCESS);
  }
  Scaler(const Scaler&) = delete;
  Scaler& operator=(const Scaler&) = delete;
  ~Scaler() { EXPECT_EQ(Zv_StopResize(state), KSUCCESS); }
  int copies(int row) {
    unsigned char pixel[64] = {};
    return Zv_Resize(pixel, row, 8, nullptr, nullptr, state);
  }

  ResizeState* state = nullptr;
};

TEST(RowScaler, StateHoldsTheSteppingInOrder) {
  const Scaler scaler(10, 3, 4, 7);
  const int expected[14] = {-1, 0, 10, 3, 4, 7, 2, 2, 0, 0, 2, 1, 0, 0};
  EXPECT_EQ(memcmp(scaler.state, expected, sizeof expected), 0);
}

TEST(RowScaler, RowsInOrderAddUpToTheNewHeight) {
  Scaler example(1, 3, 1, 7);
  for (const int copies : {2, 2, 3}) EXPECT_EQ(example.copies(example.state->LastRow + 1), copies);
  for (int oldHeight = 1; oldHeight <= 30; ++oldHeight) {
    for (int newHeight = 1; newHeight <= 60; newHeight += 3) {
      SCOPED_TRACE(testing::Message() << oldHeight << " to " << newHeight);
      Scaler scaler(5, oldHeight, 6, newHeight);
      for (int row = 0; row < oldHeight; ++row) {
        ASSERT_EQ(scaler.copies(row), (row + 1) * newHeight / oldHeight - row * newHeight / oldHeight);
      }
    }
  }
}

// From the second row on, whatever came before decides by its number alone: the row after it and a row jumped to get
// their own count, the row before it that of the row before that.
TEST(RowScaler, DecreasingRowsAreShiftedByOneAndJumpsAreNot) {
  std::mt19937 random(61);
  for (int trial = 0; trial < 200; ++trial) {
    const int oldHeight = static_cast<int>(random() % 40 + 3);
    const int newHeight = static_cast<int>(random() % 90 + 1);
    SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << oldHeight << " to " << newHeight);
    const auto inOrder = [&](int row) {
      const int wrapped = (row + oldHeight) % oldHeight;
      return (wrapped + 1) * newHeight / oldHeight - wrapped * newHeight / oldHeight;
    };
    Scaler scaler(5, oldHeight, 6, newHeight);
    int row = static_cast<int>(random()) % oldHeight;
    row = row < 0 ? -row : row;
    ASSERT_EQ(scaler.copies(row), inOrder(0));
    // Rows go on from the first as if it had been row 0, until the walk turns or jumps.
    bool settled = row == 0;
    for (int step = 0; step < 60; ++step) {
      const int last = row;
      switch (random() % 4) {
        case 0:
          row = static_cast<int>(random() % static_cast<unsigned>(oldHeight));
          break;
        case 1:
          row = last + 1 < oldHeight ? last + 1 : 0;
          break;
        default:
          row = last > 0 ? last - 1 : oldHeight - 1;
          break;
      }
      if (row == last + 1 && !settled) row = last;
      settled = true;
      const int copies = scaler.copies(row);
      ASSERT_EQ(copies, row == last - 1 ? inOrder(row - 1) : inOrder(row)) << last << " to " << row;
      ASSERT_EQ(scaler.state->Decreasing, row == last - 1 ? 1 : 0);
    }
  }
}

TEST(RowScaler, EqualSizesLeaveTheBufferAlone) {
  const Scaler scaler(3, 5, 3, 5);
  unsigned char row[] = {1, 2, 3};
  int width = 0, copies = 0;
  for (const int number : {4, 0, 2}) {
    EXPECT_EQ(Zv_Resize(row, number, 8, &width, &copies, scaler.state), 1);
    EXPECT_EQ(copies, 1);
    EXPECT_EQ(width, 3);
  }
  EXPECT_EQ(row[1], 2);
}

TEST(RowScaler, DroppedRowsLeaveTheBufferAlone) {
  const Scaler scaler(4, 4, 2, 1);
  unsigned char row[] = {1, 2, 3, 4};
  int width = 0, copies = 9;
  EXPECT_EQ(Zv_Resize(row, 0, 8, &width, &copies, scaler.state), 0);
  EXPECT_EQ(copies, 0);
  EXPECT_EQ(width, 2);
  EXPECT_EQ(row[1], 2);
}

class RowScalerDepths : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, RowScalerDepths, testing::ValuesIn(allDepths));

// The row in place is what resizing gives, and nothing behind the longer row is touched.
TEST_P(RowScalerDepths, StretchesInPlaceAsResizingDoes) {
  const int bits = GetParam();
  std::mt19937 random(62);
  for (int newWidth = 1; newWidth <= 130; ++newWidth) {
    const int others[] = {newWidth, newWidth + 1, newWidth * 2, (newWidth + 1) / 2,
                          static_cast<int>(random() % 200 + 1)};
    for (const int oldWidth : others) {
      SCOPED_TRACE(testing::Message() << oldWidth << " to " << newWidth);
      TestBitmap bitmap(oldWidth, 1, bits);
      fillWithNoise(bitmap, random);
      const size_t longer = (static_cast<size_t>(std::max(oldWidth, newWidth)) * static_cast<size_t>(bits) + 7) / 8;
      std::vector<uint8_t> row(std::max<size_t>(longer, bitmap.BytesPerLine) + 4);
      ASSERT_GT(Zv_GetBitmapRow(&bitmap, row.data(), 0, bitmap.BytesPerLine), 0);
      for (size_t i = longer; i < row.size(); ++i) row[i] = 0xA5;
      ASSERT_EQ(Zv_SizeBitmap(&bitmap, newWidth, 1, 0), KSUCCESS);
      const Picture expected = pictureOf(bitmap);

      const Scaler scaler(oldWidth, 1, newWidth, 1);
      ASSERT_EQ(Zv_Resize(row.data(), 0, bits, nullptr, nullptr, scaler.state), 1);
      for (size_t i = longer; i < row.size(); ++i) ASSERT_EQ(row[i], 0xA5);
      const auto bytes = static_cast<unsigned>((newWidth * bits + 7) / 8);
      ASSERT_EQ(Zv_PutBitmapRow(&bitmap, row.data(), 0, bytes), static_cast<int>(bytes));
      ASSERT_TRUE(pictureOf(bitmap) == expected);
    }
  }
}

TEST(RowScaler, RefusesWhatCannotBe) {
  ResizeState* state = nullptr;
  for (const int bad : {0, -1, INT_MIN}) {
    EXPECT_EQ(Zv_StartResize(bad, 5, 5, 5, &state), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_StartResize(5, bad, 5, 5, &state), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_StartResize(5, 5, bad, 5, &state), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_StartResize(5, 5, 5, bad, &state), KERR_BAD_PARAMETER);
  }
  EXPECT_EQ(Zv_StartResize(5, 5, 5, 5, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_StopResize(nullptr), KSUCCESS);
  Scaler scaler(5, 7, 5, INT_MAX);
  unsigned char row[8] = {};
  EXPECT_EQ(Zv_Resize(nullptr, 0, 8, nullptr, nullptr, scaler.state), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_Resize(row, 0, 8, nullptr, nullptr, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_Resize(row, 0, 15, nullptr, nullptr, scaler.state), KERR_BAD_BPP);
  for (const int number : {INT_MAX, INT_MIN, -1, -2, 6}) EXPECT_GE(scaler.copies(number), INT_MAX / 7);
}

}  // namespace
