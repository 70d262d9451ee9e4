// Bitmap lists, against a plain vector under random operations.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>

#include "support/platform_watch.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

// Records without storage, told apart by their Reserved1.
BitmapHandle marked(unsigned mark) {
  BitmapHandle record{};
  record.Reserved1 = mark;
  return record;
}

std::vector<unsigned> marksOf(BitmapListHandle list) {
  unsigned count = 0;
  EXPECT_EQ(Zv_GetBitmapListCount(list, &count), KSUCCESS);
  std::vector<unsigned> marks;
  for (unsigned index = 0; index < count; ++index) {
    BitmapHandle item;
    EXPECT_EQ(Zv_GetBitmapListItem(list, index, &item), KSUCCESS);
    marks.push_back(item.Reserved1);
  }
  return marks;
}

TEST(BitmapList, FollowsAPlainModel) {
  constexpr unsigned seed = 1605;
  std::mt19937 random(seed);
  BitmapListHandle list = nullptr;
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  std::vector<unsigned> model;
  for (unsigned number = 1; number <= 2000; ++number) {
    const unsigned index = random() % 20 == 0 ? 0xFFFFFFFFu : random() % (static_cast<unsigned>(model.size()) + 2);
    const bool inside = index < model.size();
    const auto at = [&](unsigned position) { return model.begin() + static_cast<std::ptrdiff_t>(position); };
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << number << ", index " << index);
    switch (random() % 5) {
      case 0:
      case 1: {
        const BitmapHandle item = marked(number);
        const bool blank = random() % 8 == 0;
        const Refusal refusal(anyResource, random() % 6 == 0 ? 1 : 100);
        const int status = Zv_InsertBitmapListItem(list, index, blank ? nullptr : &item);
        ASSERT_EQ(status, refusal.refused() != nullptr ? KERR_NO_MEMORY : KSUCCESS);
        if (status == KSUCCESS) model.insert(inside ? at(index) : model.end(), blank ? 0 : number);
        break;
      }
      case 2: {
        BitmapHandle item = marked(~0u);
        ASSERT_EQ(Zv_RemoveBitmapListItem(list, index, &item), inside ? KSUCCESS : KERR_BAD_PARAMETER);
        ASSERT_EQ(item.Reserved1, inside ? model[index] : ~0u);
        if (inside) model.erase(at(index));
        break;
      }
      case 3: {
        const BitmapHandle item = marked(number);
        ASSERT_EQ(Zv_SetBitmapListItem(list, index, &item), inside ? KSUCCESS : KERR_BAD_PARAMETER);
        if (inside) model[index] = number;
        break;
      }
      default: {
        const unsigned count = random() % 4;
        const bool valid = inside && count != 0;
        ASSERT_EQ(Zv_DeleteBitmapListItems(list, index, count), valid ? KSUCCESS : KERR_BAD_PARAMETER);
        if (valid) model.erase(at(index), at(std::min(index + count, static_cast<unsigned>(model.size()))));
      }
    }
    ASSERT_EQ(marksOf(list), model);
  }
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
}

TEST(BitmapList, CopiesItemsWithTheirPixels) {
  std::mt19937 random(1606);
  BitmapListHandle list = nullptr;
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  std::vector<Picture> pictures;
  for (int width = 1; width <= 4; ++width) {
    BitmapHandle item;
    ASSERT_EQ(Zv_CreateBitmap(&item, ALLOC_MEMORY, width, 3, 8, 0, nullptr, VIEW_UPRIGHT), KSUCCESS);
    fillWithNoise(item, random);
    pictures.push_back(pictureOf(item));
    ASSERT_EQ(Zv_InsertBitmapListItem(list, 7, &item), KSUCCESS);
  }
  BitmapListHandle copy = nullptr;
  ASSERT_EQ(Zv_CopyBitmapListItems(&copy, list, 1, 100), KSUCCESS);
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
  unsigned count = 0;
  ASSERT_EQ(Zv_GetBitmapListCount(copy, &count), KSUCCESS);
  ASSERT_EQ(count, 3u);
  for (unsigned index = 0; index < count; ++index) {
    BitmapHandle item;
    ASSERT_EQ(Zv_GetBitmapListItem(copy, index, &item), KSUCCESS);
    EXPECT_TRUE(pictureOf(item) == pictures[index + 1]);
  }

  // An item without storage cannot be copied; the copies made before it are given up.
  ASSERT_EQ(Zv_InsertBitmapListItem(copy, 2, nullptr), KSUCCESS);
  BitmapListHandle none = copy;
  EXPECT_EQ(Zv_CopyBitmapListItems(&none, copy, 0, 4), KERR_BAD_PARAMETER);
  EXPECT_EQ(none, copy) << "written in spite of the failure";
  EXPECT_EQ(Zv_DestroyBitmapList(copy), KSUCCESS);
}

TEST(BitmapList, ChecksItsArguments) {
  BitmapListHandle list = nullptr;
  BitmapHandle item{};
  unsigned count = 0;
  EXPECT_EQ(Zv_CreateBitmapList(nullptr), KERR_BAD_PARAMETER);
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapListCount(list, nullptr), KERR_BAD_PARAMETER);
  ASSERT_EQ(Zv_InsertBitmapListItem(list, 0, &item), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapListItem(list, 0, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapListItem(list, 1, &item), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyBitmapListItems(nullptr, list, 0, 1), KERR_BAD_PARAMETER);
  BitmapListHandle copy = nullptr;
  EXPECT_EQ(Zv_CopyBitmapListItems(&copy, list, 0, 0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyBitmapListItems(&copy, list, 1, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);

  for (const BitmapListHandle bad : {static_cast<BitmapListHandle>(nullptr), list}) {
    EXPECT_EQ(Zv_DestroyBitmapList(bad), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_InsertBitmapListItem(bad, 0, &item), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_RemoveBitmapListItem(bad, 0, &item), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_DeleteBitmapListItems(bad, 0, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetBitmapListCount(bad, &count), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetBitmapListItem(bad, 0, &item), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_SetBitmapListItem(bad, 0, &item), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_CopyBitmapListItems(&copy, bad, 0, 1), KERR_BAD_PARAMETER);
  }
}

}  // namespace
