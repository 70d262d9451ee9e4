// Resizing to the nearest pixels, whole, into another bitmap and row by row, against the rule pixel by pixel.
#include <zavo.h>

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>

#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

Picture nearest(const Picture& source, int width, int height) {
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      result.at(x, y) = source.at(static_cast<int>(int64_t{x} * source.width / width),
                                  static_cast<int>(int64_t{y} * source.height / height));
    }
  }
  return result;
}

// Every bit past the last pixel of every row is zero.
void expectCleanPadding(BitmapHandle& bitmap) {
  const std::vector<uint8_t> bytes = bytesOf(bitmap);
  const size_t used = static_cast<size_t>(bitmap.Width) * static_cast<size_t>(bitmap.BitsPerPixel);
  for (size_t row = 0; row < bytes.size(); row += bitmap.BytesPerLine) {
    for (size_t bit = used; bit < bitmap.BytesPerLine * 8; ++bit) {
      ASSERT_EQ(bytes[row + bit / 8] >> (7 - bit % 8) & 1, 0) << "bit " << bit;
    }
  }
}

// Scales rows of a bitmap in place, in order or on a walk that turns and jumps.
//
// From the second row on, whatever came before decides by its number alone: the row after it and a row jumped to get
// their own count, the row before it that of the row before that.
void scaleRows(BitmapHandle& bitmap, int newWidth, int newHeight, bool inOrder, std::mt19937& random) {
  const int width = bitmap.Width, height = bitmap.Height, bits = bitmap.BitsPerPixel;
  const Picture scaled = nearest(pictureOf(bitmap), newWidth, height);
  const std::vector<uint8_t> stored = bytesOf(bitmap);
  const auto bytesFor = [&](int pixels) { return (static_cast<unsigned>(pixels * bits) + 7) / 8; };
  const bool sameSize = width == newWidth && height == newHeight;
  const auto ownCount = [&](int row) {
    row = (row + height) % height;
    return sameSize ? 1 : (row + 1) * newHeight / height - row * newHeight / height;
  };
  TestBitmap result(newWidth, height, bits);
  Picture expected(newWidth, height);
  ResizeState* state = nullptr;
  ASSERT_EQ(Zv_StartResize(width, height, newWidth, newHeight, &state), KSUCCESS);
  int row = inOrder ? 0 : static_cast<int>(random() % static_cast<unsigned>(height));
  int last = row;
  // Rows go on from the first as if it had been row 0, until the walk turns or jumps.
  bool settled = row == 0;
  for (int step = 0; step < (inOrder ? height : 8); ++step) {
    std::vector<uint8_t> buffer(stored.begin() + row * static_cast<int>(bitmap.BytesPerLine), stored.end());
    const size_t longer = bytesFor(std::max(width, newWidth));
    buffer.resize(longer);
    buffer.resize(longer + 4, 0xA5);
    const std::vector<uint8_t> before = buffer;
    int madeWidth = 0, copies = -1;
    const int count = Zv_Resize(buffer.data(), row, bits, &madeWidth, &copies, state);
    ASSERT_EQ(count, step == 0         ? ownCount(0)
                     : row == last - 1 ? ownCount(row - 1)
                                       : ownCount(row))
        << last << " to " << row;
    ASSERT_EQ(copies, count);
    ASSERT_EQ(madeWidth, newWidth);
    for (size_t i = longer; i < buffer.size(); ++i) ASSERT_EQ(buffer[i], 0xA5) << "byte behind the longer row";
    if (count == 0) {
      ASSERT_EQ(buffer, before) << "a dropped row";
    } else {
      ASSERT_GT(Zv_PutBitmapRow(&result, buffer.data(), static_cast<unsigned>(row), bytesFor(newWidth)), 0);
      for (int x = 0; x < newWidth; ++x) expected.at(x, row) = scaled.at(x, row);
    }
    last = row;
    const unsigned turn = inOrder ? 1 : random() % 4;
    if (turn == 0) row = static_cast<int>(random() % static_cast<unsigned>(height));
    if (turn == 1) row = (last + 1) % height;
    if (turn >= 2) row = (last + height - 1) % height;
    if (row == last + 1 && !settled) row = last;
    settled = true;
  }
  EXPECT_EQ(Zv_StopResize(state), KSUCCESS);
  ASSERT_TRUE(pictureOf(result) == expected);
}

class Resize : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, Resize, testing::ValuesIn(allDepths));

TEST_P(Resize, TakesTheNearestPixels) {
  const int bits = GetParam();
  std::mt19937 random(31);
  for (int newWidth = 1; newWidth <= 130; ++newWidth) {
    const int others[] = {newWidth * 2, (newWidth + 1) / 2,
                          random() % 8 == 0 ? newWidth : static_cast<int>(random() % 200 + 1)};
    for (const int oldWidth : others) {
      const int oldHeight = static_cast<int>(random() % 4 + 1);
      const int newHeight = random() % 3 == 0 ? oldHeight : static_cast<int>(random() % 7 + 1);
      SCOPED_TRACE(testing::Message() << oldWidth << " x " << oldHeight << " to " << newWidth << " x " << newHeight);
      TestBitmap bitmap(oldWidth, oldHeight, bits);
      fillWithNoise(bitmap, random);
      scaleRows(bitmap, newWidth, newHeight, random() % 2 == 0, random);
      if (HasFatalFailure()) return;

      // Coloured pictures of 1 bit favour no black.
      const bool isColored = bits <= 8 && random() % 3 == 0;
      if (isColored) giveRandomPalette(bitmap, random);
      const unsigned flags = (isColored || bits > 1) && random() % 2 == 0 ? SIZE_FAVOR_BLACK : 0;
      bitmap.ViewPerspective = VIEW_TURNED_90;
      bitmap.XResolution = 11;
      bitmap.DitheringMethod = 3;
      bitmap.Reserved1 = 99;
      bitmap.PlaybackDelay = 500;
      BitmapHandle kept = bitmap;
      const Picture before = pictureOf(bitmap);
      const std::vector<PALETTEENTRY> colors = colorsOf(bitmap);
      ASSERT_EQ(Zv_SizeBitmap(&bitmap, newWidth, newHeight, flags), KSUCCESS);
      ASSERT_TRUE(pictureOf(bitmap) == nearest(before, newWidth, newHeight));
      if (newWidth != oldWidth || newHeight != oldHeight) expectCleanPadding(bitmap);
      kept.DataSize = bitmap.DataSize;
      ASSERT_EQ(
          memcmp(&bitmap.ViewPerspective, &kept.ViewPerspective, sizeof kept - offsetof(BitmapHandle, ViewPerspective)),
          0);
      const std::vector<PALETTEENTRY> colorsNow = colorsOf(bitmap);
      ASSERT_EQ(colorsNow.size(), colors.size());
      ASSERT_TRUE(colors.empty() || memcmp(colorsNow.data(), colors.data(), colors.size() * sizeof colors[0]) == 0);
    }
  }
}

// A quarter turn of the source comes before the scaling; rows that change places do so after it.
TEST_P(Resize, IntoAnotherBitmapAsSeen) {
  static constexpr int views[] = {0, VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270, 77};
  std::mt19937 random(32);
  for (const int sourceView : views) {
    for (const int view : views) {
      SCOPED_TRACE(testing::Message() << sourceView << " to " << view);
      const int width = static_cast<int>(random() % 50 + 1), height = static_cast<int>(random() % 30 + 1);
      TestBitmap source(23, 10, GetParam()), destination(width, height, GetParam()), expected;
      source.ViewPerspective = sourceView;
      destination.ViewPerspective = view;
      fillWithNoise(source, random);
      fillWithNoise(destination, random);
      const auto isTurned = [](int code) { return code == VIEW_TURNED_90 || code == VIEW_TURNED_270; };
      const bool turnsFirst = isTurned(sourceView) || isTurned(view);
      ASSERT_EQ(Zv_ChangeBitmapViewPerspective(&expected, &source, turnsFirst ? view : sourceView), KSUCCESS);
      ASSERT_EQ(Zv_SizeBitmap(&expected, width, height, 0), KSUCCESS);
      ASSERT_EQ(Zv_ChangeBitmapViewPerspective(nullptr, &expected, view), KSUCCESS);
      const Snapshot unchanged(source);
      ASSERT_EQ(Zv_ResizeBitmap(&source, &destination), KSUCCESS);
      ASSERT_TRUE(unchanged.unchanged());
      ASSERT_TRUE(pictureOf(destination) == pictureOf(expected));
    }
  }
}

TEST(SizeBitmap, ScalesTheRegionAlong) {
  for (const unsigned flags : {0u, unsigned{SIZE_RESAMPLE}, unsigned{SIZE_FAVOR_BLACK}}) {
    TestBitmap bitmap(20, 30, 1);
    const RECT rect = {3, 9, 9, 21};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineSet), KSUCCESS);
    ASSERT_EQ(Zv_SizeBitmap(&bitmap, 10, 90, flags), KSUCCESS);
    EXPECT_TRUE(regionExtentOf(bitmap) == (RegionExtent{3 * 36, {1, 27, 4, 63}})) << flags;
  }
}

TEST(RowScaler, StateHoldsTheSteppingInOrder) {
  ResizeState* state = nullptr;
  ASSERT_EQ(Zv_StartResize(10, 3, 4, 7, &state), KSUCCESS);
  const int expected[14] = {-1, 0, 10, 3, 4, 7, 2, 2, 0, 0, 2, 1, 0, 0};
  EXPECT_EQ(memcmp(state, expected, sizeof expected), 0);
  Zv_StopResize(state);
}

}  // namespace
