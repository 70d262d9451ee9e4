// Rectangle copies and trims, against the pixels one by one.
#include <zavo.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

Picture cut(const Picture& picture, int left, int top, int width, int height) {
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) result.at(x, y) = picture.orZero(left + x, top + y);
  }
  return result;
}

TEST(CopyBitmapRect, MatchesThePixelsAtAnyDepthAndPlace) {
  constexpr unsigned seed = 1603;
  std::mt19937 random(seed);
  const auto between = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  for (const int bits : allDepths) {
    for (int number = 0; number < 300; ++number) {
      const int memoryType = number % 3 == 0 ? ALLOC_MEMORY | ALLOC_RUNLENGTH : ALLOC_MEMORY;
      TestBitmap source(between(1, 70), between(1, 6), bits, memoryType);
      ASSERT_TRUE(source.allocated());
      fillWithNoise(source, random);
      const int left = between(-20, source.Width + 3);
      const int top = between(-3, source.Height + 1);
      const int width = between(1, 90);
      const int height = between(1, 9);
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << bits << " bits, case " << number << ": "
                                      << source.Width << " x " << source.Height << ", rectangle " << left << ", " << top
                                      << ", " << width << " x " << height);
      const Picture before = pictureOf(source);
      const int insideLeft = std::max(left, 0);
      const int insideTop = std::max(top, 0);
      const int insideWidth = std::min(left + width, source.Width) - insideLeft;
      const int insideHeight = std::min(top + height, source.Height) - insideTop;
      const bool shares = insideWidth > 0 && insideHeight > 0;
      const auto columns = static_cast<unsigned>(width);
      const auto rows = static_cast<unsigned>(height);

      TestBitmap copy;
      ASSERT_EQ(Zv_CopyBitmapRect(&copy, &source, left, top, columns, rows), KSUCCESS);
      ASSERT_EQ(copy.allocated(), shares);
      ASSERT_TRUE(pictureOf(source) == before);
      if (shares) {
        ASSERT_TRUE(pictureOf(copy) == cut(before, left, top, width, height));
      }

      TestBitmap trimmed;
      ASSERT_EQ(Zv_CopyBitmap(&trimmed, &source), KSUCCESS);
      ASSERT_EQ(Zv_TrimBitmap(&trimmed, left, top, columns, rows), shares ? KSUCCESS : KERR_EMPTY);
      ASSERT_TRUE(pictureOf(trimmed) ==
                  (shares ? cut(before, insideLeft, insideTop, insideWidth, insideHeight) : before));

      BitmapHandle* const inPlace = number % 2 == 0 ? nullptr : &source;
      ASSERT_EQ(Zv_CopyBitmapRect(inPlace, &source, left, top, columns, rows), KSUCCESS);
      ASSERT_TRUE(pictureOf(source) == (shares ? cut(before, left, top, width, height) : before));
    }
  }
}

TEST(CopyBitmapRect, SidesBeyondTheSignedRange) {
  TestBitmap source(20, 20, 1);
  const BitmapHandle before = source;
  const struct {
    int left, top;
    unsigned width, height;
    int status;
  } cases[] = {{0, 0, 0, 5, KERR_EMPTY},
               {0, 0, 5, 0, KERR_EMPTY},
               {INT_MAX, 0, 10, 10, KSUCCESS},
               {INT_MIN, INT_MIN, 10, 10, KSUCCESS},
               {INT_MIN, 0, 0x80000010u, 1, KERR_NO_MEMORY},
               {0, 0, 0xFFFFFFFFu, 1, KERR_NO_MEMORY},
               {0, 0, 1, 0xFFFFFFFFu, KERR_NO_MEMORY},
               {0, 0, 0x7FFFFFFFu, 0x7FFFFFFFu, KERR_NO_MEMORY}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.left << ", " << c.top << ", " << c.width << " x " << c.height);
    TestBitmap copy;
    EXPECT_EQ(Zv_CopyBitmapRect(&copy, &source, c.left, c.top, c.width, c.height), c.status);
    EXPECT_FALSE(copy.allocated());
    EXPECT_EQ(copy.Palette, nullptr);
    EXPECT_EQ(Zv_CopyBitmapRect(nullptr, &source, c.left, c.top, c.width, c.height), c.status);
    EXPECT_EQ(memcmp(&source, &before, sizeof before), 0);
  }
  TestBitmap copy;
  EXPECT_EQ(Zv_CopyBitmapRect(&copy, nullptr, 0, 0, 1, 1), KERR_BAD_PARAMETER);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_CopyBitmapRect(&copy, &empty, 0, 0, 1, 1), KERR_BAD_PARAMETER);
  // 2147483640 + 10 wraps in 32 bits; the rectangle still begins right of the image.
  EXPECT_EQ(Zv_CopyBitmapRect(&copy, &source, 2147483640, 0, 10, 1), KSUCCESS);
  EXPECT_FALSE(copy.allocated());
}

TEST(TrimBitmap, SidesBeyondTheSignedRange) {
  TestBitmap bitmap(20, 20, 5);
  EXPECT_EQ(Zv_TrimBitmap(&bitmap, 4, 0, UINT_MAX, UINT_MAX), KSUCCESS);
  EXPECT_EQ(bitmap.Width, 16);
  EXPECT_EQ(bitmap.Height, 20);
  EXPECT_EQ(Zv_TrimBitmap(nullptr, 0, 0, 5, 5), KERR_BAD_PARAMETER);
}

}  // namespace
