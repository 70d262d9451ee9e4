// Reducing the colours of all bitmaps of a list: one palette, all or nothing.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "color/colors.h"
#include "support/progress_log.h"
#include "support/refusals.h"
#include "support/snapshot.h"

namespace {

using namespace zavotest;

class ListOfBitmaps {
 public:
  ListOfBitmaps() { Zv_CreateBitmapList(&handle); }
  ~ListOfBitmaps() { Zv_DestroyBitmapList(handle); }
  void add(int width, int height, int bits, std::mt19937& random) {
    BitmapHandle bitmap;
    Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, width, height, bits, ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT);
    fillWithPicture(bitmap, random);
    Zv_InsertBitmapListItem(handle, 0xFFFFFFFF, &bitmap);
  }
  BitmapHandle item(unsigned index) const {
    BitmapHandle bitmap{};
    Zv_GetBitmapListItem(handle, index, &bitmap);
    return bitmap;
  }

  BitmapListHandle handle = nullptr;
};

TEST(ColorReductionList, AllItemsShareAnOptimisedPalette) {
  std::mt19937 random(251);
  for (const unsigned option : {0u, unsigned{COLORRES_OPTIMISED_PALETTE}}) {
    ListOfBitmaps list;
    list.add(30, 20, 24, random);
    list.add(11, 5, 16, random);
    list.add(25, 30, 32, random);
    ASSERT_EQ(Zv_ColorResBitmapList(list.handle, 5, option, nullptr, 0), KSUCCESS);
    BitmapHandle first = list.item(0);
    for (unsigned i = 0; i < 3; ++i) {
      const BitmapHandle item = list.item(i);
      EXPECT_EQ(item.BitsPerPixel, 5);
      const Palette palette = paletteOf(first);
      EXPECT_EQ(Zv_CompareHandleToPalette(item.Palette, palette.data(), 32), 1);
    }
  }
}

TEST(ColorReductionList, ItemsWhosePaletteFitsKeepIt) {
  std::mt19937 random(252);
  ListOfBitmaps list;
  list.add(30, 20, 4, random);
  list.add(30, 20, 24, random);
  ASSERT_EQ(Zv_ColorResBitmapList(list.handle, 6, 0, nullptr, 0), KSUCCESS);
  EXPECT_EQ(Zv_CompareHandleToPalette(list.item(0).Palette, Zv_IntGetFixedPalette(4), 16), 1);
}

TEST(ColorReductionList, AllOrNothing) {
  std::mt19937 random(253);
  ListOfBitmaps list;
  for (const int bits : {24, 8, 16}) list.add(13, 4, bits, random);
  BitmapHandle items[] = {list.item(0), list.item(1), list.item(2)};
  const Snapshot before[] = {Snapshot(items[0]), Snapshot(items[1]), Snapshot(items[2])};
  const auto unchanged = [&] {
    for (unsigned i = 0; i < 3; ++i) {
      const BitmapHandle now = list.item(i);
      EXPECT_EQ(now.BitsPerPixel, items[i].BitsPerPixel);
      EXPECT_EQ(now.Palette, items[i].Palette);
      EXPECT_TRUE(before[i].unchanged());
    }
  };
  {
    const ProgressLog stop(11, -99);  // in the third item
    EXPECT_EQ(Zv_ColorResBitmapList(list.handle, 4, COLORRES_OPTIMISED_PALETTE, nullptr, 0), -99);
  }
  unchanged();
  refuseEachResource({.leastPoints = 10}, [&](RefusalRound& round) {
    ListOfBitmaps own;
    for (const int bits : {24, 8}) own.add(13, 4, bits, random);
    BitmapHandle item = own.item(0);
    const Snapshot whole(item);
    if (round.run([&] { return Zv_ColorResBitmapList(own.handle, 4, 0, nullptr, 0); }) < 0) {
      EXPECT_EQ(own.item(0).BitsPerPixel, 24);
      EXPECT_EQ(own.item(1).BitsPerPixel, 8);
      EXPECT_TRUE(whole.unchanged());
    }
  });

  const ProgressLog log;
  EXPECT_EQ(Zv_ColorResBitmapList(list.handle, 8, COLORRES_FIXED_PALETTE, nullptr, 0), KSUCCESS);
  for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(list.item(i).BitsPerPixel, 8);
  EXPECT_EQ(log.percents.front(), 0);
  EXPECT_EQ(log.percents.back(), 100);
  EXPECT_TRUE(std::is_sorted(log.percents.begin(), log.percents.end()));
}

TEST(ColorReductionList, RefusesBadArguments) {
  std::mt19937 random(254);
  ListOfBitmaps list;
  EXPECT_EQ(Zv_ColorResBitmapList(nullptr, 8, 0, nullptr, 0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ColorResBitmapList(list.handle, 8, 0, nullptr, 0), KSUCCESS);
  list.add(5, 5, 24, random);
  EXPECT_EQ(Zv_ColorResBitmapList(list.handle, 9, 0, nullptr, 0), KERR_BAD_BPP);
  EXPECT_EQ(Zv_ColorResBitmapList(list.handle, 8, 0x30, nullptr, 0), KERR_BAD_PARAMETER);
  Zv_InsertBitmapListItem(list.handle, 1, nullptr);
  EXPECT_EQ(Zv_ColorResBitmapList(list.handle, 8, 0, nullptr, 0), KERR_BAD_BITMAP);
  EXPECT_EQ(list.item(0).BitsPerPixel, 24);
}

}  // namespace
