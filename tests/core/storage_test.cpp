// Storage.
#include <zavo.h>

#include <gtest/gtest.h>

#include "support/refusals.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

TEST(AllocateBitmap, LeavesNothingBehindWhenRefused) {
  for (const int memoryType : {int{ALLOC_MEMORY}, int{ALLOC_RUNLENGTH}}) {
    refuseEachResource({.leastPoints = 2}, [&](RefusalRound& round) {
      TestBitmap bitmap;
      ASSERT_EQ(Zv_InitBitmap(&bitmap, 100, 20, 1), KSUCCESS);
      round.run([&] { return Zv_AllocateBitmap(&bitmap, memoryType); });
    });
  }
}

TEST(ChangeBitmapHeight, KeepsTheBitmapWhenRefused) {
  refuseEachResource({}, [&](RefusalRound& round) {
    TestBitmap bitmap(37, 11, 4);
    round.keeps(bitmap);
    round.run([&] { return Zv_ChangeBitmapHeight(&bitmap, 20); });
  });
}

}  // namespace
