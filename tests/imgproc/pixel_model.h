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

// A row's pixels in another format, by the library's row conversion, which has its own tests.
struct Format {
  int depth;  // 0: grey levels
  int order;
  Palette palette;
};

inline Format formatOf(const BitmapHandle& bitmap) {
  Format format = {bitmap.BitsPerPixel, bitmap.ColorOrder == ORDER_BLUE_FIRST ? 1 : 0, paletteOf(bitmap)};
  if (format.palette.empty() && format.depth <= 8) {
    const RGBQUAD* fixed = Zv_IntGetFixedPalette(format.depth);
    format.palette.assign(fixed, fixed + (1 << format.depth));
  }
  return format;
}

inline uint32_t converted(uint32_t pixel, const Format& from, const Format& to) {
  uint8_t row[4] = {};
  const int fromBits = from.depth == 0 ? 8 : from.depth;
  const int toBits = to.depth == 0 ? 8 : to.depth;
  for (int bit = 0; bit < fromBits; ++bit) {
    if (pixel >> (fromBits - 1 - bit) & 1) row[bit / 8] = static_cast<uint8_t>(row[bit / 8] | 0x80 >> bit % 8);
  }
  EXPECT_EQ(Zv_ConvertBuffer(row, 1, from.depth, to.depth, from.order, to.order,
                             from.palette.empty() ? nullptr : from.palette.data(),
                             to.palette.empty() ? nullptr : to.palette.data()),
            KSUCCESS);
  uint32_t result = 0;
  for (int bit = 0; bit < toBits; ++bit) result = result << 1 | (row[bit / 8] >> (7 - bit % 8) & 1);
  return result;
}

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
