// Coordinates between view perspectives, against stored images built from a seen picture.
#include <zavo.h>

#include <gtest/gtest.h>
#include <set>

#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr int codes[] = {0, 1, 2, 4, 8, 3, -1};

// The stored image of a code, by the definition of the codes: the stored image of code 2 is the picture upside down,
// those of 4 and 8 show the picture when turned clockwise by 90 or 270 degrees.
Picture stored(const Picture& seen, int code) {
  if (code != 2 && code != 4 && code != 8) return seen;
  Picture image = code == 2 ? Picture(seen.width, seen.height) : Picture(seen.height, seen.width);
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      if (code == 2) image.at(x, y) = seen.at(x, seen.height - 1 - y);
      if (code == 4) image.at(x, y) = seen.at(image.height - 1 - y, x);
      if (code == 8) image.at(x, y) = seen.at(y, image.width - 1 - x);
    }
  }
  return image;
}

// The pixels of a rectangle in increasing order; one that reaches outside gives zeros.
std::multiset<uint32_t> pixelsIn(const Picture& picture, const RECT& rect) {
  std::multiset<uint32_t> found;
  for (int y = rect.top; y < rect.bottom; ++y) {
    for (int x = rect.left; x < rect.right; ++x) found.insert(picture.orZero(x, y));
  }
  return found;
}

TEST(Perspective, PointsAndRectanglesKeepTheirPixelsInEveryFrame) {
  Picture seen(5, 3);
  for (uint32_t i = 0; i < 15; ++i) seen.pixels[i] = i + 1;
  for (const int from : codes) {
    for (const int to : codes) {
      const Picture here = stored(seen, from);
      const Picture there = stored(seen, to);
      BitmapHandle bitmap{};
      ASSERT_EQ(Zv_InitBitmap(&bitmap, here.width, here.height, 8), KSUCCESS);
      bitmap.ViewPerspective = from;
      for (int i = 0; i < 15; ++i) {
        const int column = i % here.width;
        const int row = i / here.width;
        SCOPED_TRACE(testing::Message() << "from " << from << " to " << to << ": " << column << ", " << row);
        int x = column;
        int y = row;
        ASSERT_EQ(Zv_PointFromBitmap(&bitmap, to, &x, &y), KSUCCESS);
        EXPECT_EQ(there.orZero(x, y), here.at(column, row));
        ASSERT_EQ(Zv_PointToBitmap(&bitmap, to, &x, &y), KSUCCESS);
        EXPECT_EQ(std::pair(x, y), std::pair(column, row));

        const RECT original = {column, row, here.width, row + 1};
        RECT rect = original;
        ASSERT_EQ(Zv_RectFromBitmap(&bitmap, to, &rect), KSUCCESS);
        EXPECT_EQ(pixelsIn(there, rect), pixelsIn(here, original));
        ASSERT_EQ(Zv_RectToBitmap(&bitmap, to, &rect), KSUCCESS);
        EXPECT_TRUE(EqualRect(&rect, &original));
      }
    }
  }
}

TEST(Perspective, RefusesNull) {
  BitmapHandle bitmap{};
  RECT rect{};
  int x = 0;
  for (const auto function : {Zv_PointFromBitmap, Zv_PointToBitmap}) {
    EXPECT_EQ(function(nullptr, 1, &x, &x), KERR_BAD_PARAMETER);
    EXPECT_EQ(function(&bitmap, 1, nullptr, &x), KERR_BAD_PARAMETER);
    EXPECT_EQ(function(&bitmap, 1, &x, nullptr), KERR_BAD_PARAMETER);
  }
  for (const auto function : {Zv_RectFromBitmap, Zv_RectToBitmap}) {
    EXPECT_EQ(function(nullptr, 1, &rect), KERR_BAD_PARAMETER);
    EXPECT_EQ(function(&bitmap, 1, nullptr), KERR_BAD_PARAMETER);
  }
}

}  // namespace
