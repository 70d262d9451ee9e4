// Bitmap lists, against a plain vector under random operations.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>

#include "support/platform_watch.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

// Items are told apart by their only pixel; 0 stands for a record without storage.
BitmapHandle marked(unsigned mark) {
  BitmapHandle item{};
  EXPECT_EQ(Zv_CreateBitmap(&item, ALLOC_MEMORY, 1, 1, 32, 0, nullptr, VIEW_UPRIGHT), KSUCCESS);
  Zv_PutBitmapRow(&item, reinterpret_cast<const uint8_t*>(&mark), 0, sizeof mark);
  return item;
}

unsigned markOf(BitmapHandle& item) {
  unsigned mark = 0;
  if ((item.Flags & BMF_ALLOCATED) != 0) Zv_GetBitmapRow(&item, reinterpret_cast<uint8_t*>(&mark), 0, sizeof mark);
  return mark;
}

using Marks = std::vector<unsigned>;

Marks marksOf(BitmapListHandle list) {
  unsigned count = 0;
  EXPECT_EQ(Zv_GetBitmapListCount(list, &count), KSUCCESS);
  Marks marks;
  for (unsigned index = 0; index < count; ++index) {
    BitmapHandle item;
    EXPECT_EQ(Zv_GetBitmapListItem(list, index, &item), KSUCCESS);
    marks.push_back(markOf(item));
  }
  return marks;
}

TEST(BitmapList, FollowsAPlainModel) {
  constexpr unsigned seed = 1605;
  std::mt19937 random(seed);
  BitmapListHandle list = nullptr;
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  Marks model;
  for (unsigned number = 1; number <= 1500; ++number) {
    const auto size = static_cast<unsigned>(model.size());
    const unsigned index = random() % 20 == 0 ? 0xFFFFFFFFu : random() % (size + 2);
    const bool inside = index < size;
    const unsigned count = random() % 4;
    const auto first = model.begin() + static_cast<std::ptrdiff_t>(std::min(index, size));
    const auto last = first + static_cast<std::ptrdiff_t>(inside ? std::min(count, size - index) : 0);
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << number << ", index " << index);
    switch (random() % 6) {
      case 0:
      case 1: {
        const bool blank = random() % 8 == 0;
        TestBitmap item;
        if (!blank) static_cast<BitmapHandle&>(item) = marked(number);
        const Refusal refusal(anyResource, random() % 6 == 0 ? 1 : 100);
        const int status = Zv_InsertBitmapListItem(list, index, blank ? nullptr : &item);
        ASSERT_EQ(status, refusal.refused() != nullptr ? KERR_NO_MEMORY : KSUCCESS);
        if (status != KSUCCESS) break;
        model.insert(first, blank ? 0 : number);
        static_cast<BitmapHandle&>(item) = {};
        break;
      }
      case 2: {
        TestBitmap item;
        ASSERT_EQ(Zv_RemoveBitmapListItem(list, index, &item), inside ? KSUCCESS : KERR_BAD_PARAMETER);
        ASSERT_EQ(markOf(item), inside ? *first : 0);
        if (inside) model.erase(first);
        break;
      }
      case 3: {
        TestBitmap item, replaced;
        static_cast<BitmapHandle&>(item) = marked(number);
        (void)Zv_GetBitmapListItem(list, index, &replaced);
        ASSERT_EQ(Zv_SetBitmapListItem(list, index, &item), inside ? KSUCCESS : KERR_BAD_PARAMETER);
        if (!inside) break;
        *first = number;
        static_cast<BitmapHandle&>(item) = {};
        break;
      }
      case 4: {
        // An item without storage cannot be copied; the copies made before it are given up.
        BitmapListHandle copy = list;
        const bool valid = first != last && std::count(first, last, 0u) == 0;
        ASSERT_EQ(Zv_CopyBitmapListItems(&copy, list, index, count), valid ? KSUCCESS : KERR_BAD_PARAMETER);
        ASSERT_EQ(copy != list, valid) << "written in spite of the failure";
        if (!valid) break;
        EXPECT_EQ(marksOf(copy), Marks(first, last));
        EXPECT_EQ(Zv_DestroyBitmapList(copy), KSUCCESS);
        break;
      }
      default:
        ASSERT_EQ(Zv_DeleteBitmapListItems(list, index, count), first != last ? KSUCCESS : KERR_BAD_PARAMETER);
        model.erase(first, last);
    }
    ASSERT_EQ(marksOf(list), model);
  }
  EXPECT_EQ(Zv_DestroyBitmapList(list), KSUCCESS);
}

TEST(BitmapList, RefusesNullAndDestroyedLists) {
  BitmapListHandle list = nullptr, copy = nullptr;
  BitmapHandle item{};
  unsigned count = 0;
  EXPECT_EQ(Zv_CreateBitmapList(nullptr), KERR_BAD_PARAMETER);
  ASSERT_EQ(Zv_CreateBitmapList(&list), KSUCCESS);
  ASSERT_EQ(Zv_InsertBitmapListItem(list, 0, &item), KSUCCESS);
  EXPECT_EQ(Zv_GetBitmapListCount(list, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapListItem(list, 0, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_GetBitmapListItem(list, 1, &item), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_CopyBitmapListItems(nullptr, list, 0, 1), KERR_BAD_PARAMETER);
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
