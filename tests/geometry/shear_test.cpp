// Shearing of bitmaps.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>

#include "support/progress_log.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr COLORREF indexZero = 0x01000000;

// Row shifts straight from the rule, with its strict comparison.
std::vector<int> shiftsFor(int angle, int rows) {
  const int sine = Zv_SinValue(angle), cosine = Zv_SinValue(9000 - angle);
  std::vector<int> shifts;
  int shift = 0, accumulated = 0;
  for (int row = 0; row < rows; ++row) {
    shifts.push_back(shift);
    shift += sine / cosine;
    accumulated += sine % cosine;
    if (accumulated > cosine) {
      accumulated -= cosine;
      ++shift;
    }
  }
  return shifts;
}

TEST(Shear, MovesRowsOrColumnsAsSeen) {
  std::mt19937 random(40);
  for (const int bits : allDepths) {
    for (const int memoryType : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
      for (const int angle : {0, 700, 3333, 4500, -700, -4500}) {
        for (const bool horizontal : {true, false}) {
          SCOPED_TRACE(testing::Message() << bits << " bits, angle " << angle << (horizontal ? "" : ", vertical"));
          TestBitmap bitmap(19, 13, bits, memoryType);
          bitmap.ViewPerspective = VIEW_UPRIGHT;
          fillWithNoise(bitmap, random);
          const Picture before = pictureOf(bitmap);
          ASSERT_EQ(Zv_ShearBitmap(&bitmap, angle, horizontal, bits <= 8 ? indexZero : 0), KSUCCESS);
          const Picture after = pictureOf(bitmap);

          const int lines = horizontal ? before.height : before.width;
          const int magnitude = angle < 0 ? -angle : angle;
          const int room = Zv_SinValue(magnitude) * lines / Zv_SinValue(9000 - magnitude);
          ASSERT_EQ(after.width, before.width + (horizontal ? room : 0));
          ASSERT_EQ(after.height, before.height + (horizontal ? 0 : room));
          const std::vector<int> shifts = shiftsFor(magnitude, lines);
          for (int y = 0; y < after.height; ++y) {
            for (int x = 0; x < after.width; ++x) {
              // Columns rise to the right: from the bottom of the room that they have.
              const int shift = shifts[static_cast<size_t>(horizontal ? y : x)];
              const int moved = angle < 0 ? room - shift : shift;
              const uint32_t expected = horizontal ? before.orZero(x - moved, y) : before.orZero(x, y - (room - moved));
              ASSERT_EQ(after.at(x, y), expected) << "at " << x << ", " << y;
            }
          }
        }
      }
    }
  }
}

TEST(Shear, ShowsTheSameInEveryPerspective) {
  std::mt19937 random(41);
  TestBitmap picture(19, 13, 8);
  picture.ViewPerspective = VIEW_UPRIGHT;
  fillWithNoise(picture, random);
  for (const int angle : {1500, -1500}) {
    for (const int horizontal : {1, 0}) {
      TestBitmap expected;
      ASSERT_EQ(Zv_CopyBitmap(&expected, &picture), KSUCCESS);
      ASSERT_EQ(Zv_ShearBitmap(&expected, angle, horizontal, indexZero), KSUCCESS);
      for (const int perspective : {VIEW_BOTTOM_UP, VIEW_TURNED_90, VIEW_TURNED_270}) {
        SCOPED_TRACE(testing::Message() << perspective << ", angle " << angle << ", horizontal " << horizontal);
        TestBitmap other;
        ASSERT_EQ(Zv_ChangeBitmapViewPerspective(&other, &picture, perspective), KSUCCESS);
        ASSERT_EQ(Zv_ShearBitmap(&other, angle, horizontal, indexZero), KSUCCESS);
        EXPECT_EQ(other.ViewPerspective, perspective);
        ASSERT_EQ(Zv_ChangeBitmapViewPerspective(nullptr, &other, VIEW_UPRIGHT), KSUCCESS);
        EXPECT_TRUE(pictureOf(other) == pictureOf(expected));
      }
    }
  }
}

TEST(Shear, RegionMovesWithThePixels) {
  TestBitmap bitmap(10, 10, 8);
  bitmap.ViewPerspective = VIEW_UPRIGHT;
  const RECT row = {2, 6, 5, 7};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &row, CombineSet), KSUCCESS);
  ASSERT_EQ(Zv_ShearBitmap(&bitmap, 4500, 1, 0), KSUCCESS);
  EXPECT_EQ(bitmap.Width, 20);
  RECT bounds;
  ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  const int shift = shiftsFor(4500, 10)[6];
  const RECT expected = {2 + shift, 6, 5 + shift, 7};
  EXPECT_TRUE(EqualRect(&bounds, &expected));
}

TEST(Shear, RefusalsAndAbortLeaveTheBitmapWhole) {
  TestBitmap bitmap(30, 20, 24);
  const Snapshot before(bitmap);
  EXPECT_EQ(Zv_ShearBitmap(&bitmap, 4501, 1, 0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ShearBitmap(&bitmap, -4501, 1, 0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ShearBitmap(nullptr, 100, 1, 0), KERR_BAD_BITMAP);
  for (const int horizontal : {1, 0}) {
    const ProgressLog log(3, 0);
    EXPECT_EQ(Zv_ShearBitmap(&bitmap, -2000, horizontal, 0), 0);
  }
  EXPECT_TRUE(before.unchanged());

  TestBitmap wide(10900, 40, 24);
  EXPECT_EQ(Zv_ShearBitmap(&wide, 4500, 1, 0), KERR_BAD_PARAMETER) << "rows of more than 32768 bytes";
  EXPECT_EQ(wide.Width, 10900);
}

}  // namespace
