// Pixels of any format as numbers, and bitmaps of every kind: what the models of combining and underlaying share.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <random>

#include "color/colors.h"
#include "support/test_bitmap.h"

namespace zavotest {

constexpr int perspectives[] = {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270, 0};

inline void expectSame(const Picture& picture, const Picture& expected) {
  ASSERT_EQ(picture.pixels.size(), expected.pixels.size());
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) ASSERT_EQ(picture.at(x, y), expected.at(x, y)) << "at " << x << ", " << y;
  }
}

inline void makeGray(BitmapHandle& bitmap) {
  DeleteObject(bitmap.Palette);
  bitmap.Palette = Zv_CreateGrayPalette(8);
}

// A place or length near an edge, mostly.
inline int nearEdge(std::mt19937& random, int size) {
  const int edges[] = {0, 1, 7, 8, 9, size / 2, size - 1, size, size + 3, -1, -5};
  return edges[random() % std::size(edges)];
}

inline void giveRandomRegion(BitmapHandle& bitmap, std::mt19937& random) {
  const RECT box = {nearEdge(random, bitmap.Width) - 2, nearEdge(random, bitmap.Height) - 2, bitmap.Width,
                    bitmap.Height};
  const RECT hole = {bitmap.Width / 3, 1, bitmap.Width / 2, bitmap.Height - 1};
  Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &box, CombineSet);
  Zv_SetBitmapRgnRect(&bitmap, nullptr, &hole, CombineXor);
}

inline void makeRandom(BitmapHandle& bitmap, std::mt19937& random) {
  bitmap.ViewPerspective = perspectives[random() % std::size(perspectives)];
  if (bitmap.BitsPerPixel >= 16) bitmap.ColorOrder = random() % 2 == 0 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
  if (bitmap.BitsPerPixel == 8 && random() % 2 == 0) makeGray(bitmap);
  if (bitmap.BitsPerPixel <= 8 && random() % 3 == 0) giveRandomPalette(bitmap, random);
  fillWithNoise(bitmap, random);
  if (random() % 2 == 0) giveRandomRegion(bitmap, random);
}

}  // namespace zavotest
