// Coordinates between view perspectives, against stored images built from a seen picture.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>

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

// Every pixel a number of its own.
Picture numbered(int width, int height) {
  Picture picture(width, height);
  for (size_t k = 0; k < picture.pixels.size(); ++k) picture.pixels[k] = static_cast<uint32_t>(k);
  return picture;
}

BitmapHandle described(const Picture& image, int code) {
  BitmapHandle bitmap{};
  EXPECT_EQ(Zv_InitBitmap(&bitmap, image.width, image.height, 8), KSUCCESS);
  bitmap.ViewPerspective = code;
  return bitmap;
}

TEST(Perspective, PointsNameTheSamePixelInEveryFrame) {
  const Picture seen = numbered(5, 3);
  for (const int from : codes) {
    for (const int to : codes) {
      SCOPED_TRACE(testing::Message() << "from " << from << " to " << to);
      const Picture here = stored(seen, from);
      const Picture there = stored(seen, to);
      BitmapHandle bitmap = described(here, from);
      for (int row = 0; row < here.height; ++row) {
        for (int column = 0; column < here.width; ++column) {
          int x = column;
          int y = row;
          ASSERT_EQ(Zv_PointFromBitmap(&bitmap, to, &x, &y), KSUCCESS);
          ASSERT_TRUE(x >= 0 && y >= 0 && x < there.width && y < there.height) << x << ", " << y;
          EXPECT_EQ(there.at(x, y), here.at(column, row)) << column << ", " << row;
          ASSERT_EQ(Zv_PointToBitmap(&bitmap, to, &x, &y), KSUCCESS);
          EXPECT_EQ(x, column);
          EXPECT_EQ(y, row);
        }
      }
    }
  }
}

TEST(Perspective, RectanglesHoldTheSamePixelsInEveryFrame) {
  const Picture seen = numbered(6, 4);
  const auto pixelsIn = [](const Picture& picture, const RECT& rect) {
    std::vector<uint32_t> found;
    for (int y = rect.top; y < rect.bottom; ++y) {
      for (int x = rect.left; x < rect.right; ++x) found.push_back(picture.at(x, y));
    }
    std::sort(found.begin(), found.end());
    return found;
  };
  for (const int from : codes) {
    for (const int to : codes) {
      SCOPED_TRACE(testing::Message() << "from " << from << " to " << to);
      const Picture here = stored(seen, from);
      const Picture there = stored(seen, to);
      BitmapHandle bitmap = described(here, from);
      for (const RECT original : {RECT{0, 0, here.width, here.height}, RECT{1, 0, 3, 1}, RECT{0, 2, 1, 4}}) {
        RECT rect = original;
        ASSERT_EQ(Zv_RectFromBitmap(&bitmap, to, &rect), KSUCCESS);
        EXPECT_EQ(pixelsIn(there, rect), pixelsIn(here, original));
        ASSERT_EQ(Zv_RectToBitmap(&bitmap, to, &rect), KSUCCESS);
        EXPECT_TRUE(EqualRect(&rect, &original));
      }
    }
  }
}

TEST(Perspective, WrittenOutCases) {
  BitmapHandle bitmap = described(Picture(10, 20), VIEW_BOTTOM_UP);
  int x = 3;
  int y = 0;
  Zv_PointFromBitmap(&bitmap, VIEW_UPRIGHT, &x, &y);
  EXPECT_EQ(x, 3);
  EXPECT_EQ(y, 19);
  y = 0;
  Zv_PointFromBitmap(&bitmap, VIEW_TURNED_90, &x, &y);
  EXPECT_EQ(x, 19);
  EXPECT_EQ(y, 6);
  RECT rect = {0, 0, 10, 5};
  Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &rect);
  const RECT expected = {0, 15, 10, 20};
  EXPECT_TRUE(EqualRect(&rect, &expected));

  EXPECT_EQ(Zv_PointFromBitmap(nullptr, 1, &x, &y), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PointToBitmap(nullptr, 1, &x, &y), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_PointToBitmap(&bitmap, 1, nullptr, &y), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_RectFromBitmap(nullptr, 1, &rect), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_RectToBitmap(nullptr, 1, &rect), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_RectToBitmap(&bitmap, 1, nullptr), KERR_BAD_PARAMETER);
}

}  // namespace
