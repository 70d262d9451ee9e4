// Resizing to the nearest pixels, against the rule pixel by pixel.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "support/progress_log.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

Picture nearest(const Picture& source, int width, int height) {
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      result.at(x, y) = source.at(static_cast<int>(int64_t{x} * source.width / width),
                                  static_cast<int>(int64_t{y} * source.height / height));
    }
  }
  return result;
}

Picture upsideDown(const Picture& picture) {
  Picture result(picture.width, picture.height);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) result.at(x, y) = picture.at(x, picture.height - 1 - y);
  }
  return result;
}

// Every bit past the last pixel of every row is zero.
void expectCleanPadding(BitmapHandle& bitmap) {
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const auto used = static_cast<size_t>(bitmap.Width) * static_cast<size_t>(bitmap.BitsPerPixel);
  for (int y = 0; y < bitmap.Height; ++y) {
    const int wasLocked = Zv_LockBitmap(&bitmap);
    Zv_GetBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
    Zv_UnlockBitmap(&bitmap, wasLocked);
    for (size_t bit = used; bit < row.size() * 8; ++bit) ASSERT_EQ(row[bit / 8] >> (7 - bit % 8) & 1, 0);
  }
}

class Resize : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Depths, Resize, testing::ValuesIn(allDepths));

TEST_P(Resize, InPlaceTakesTheNearestPixels) {
  const int bits = GetParam();
  std::mt19937 random(31);
  for (int trial = 0; trial < 120; ++trial) {
    const int from[] = {static_cast<int>(random() % 130 + 1), static_cast<int>(random() % 12 + 1)};
    const int to[] = {trial < 40 ? trial + 1 : static_cast<int>(random() % 130 + 1),
                      static_cast<int>(random() % 12 + 1)};
    SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << from[0] << " x " << from[1] << " to " << to[0]
                                    << " x " << to[1]);
    TestBitmap bitmap(from[0], from[1], bits);
    ASSERT_TRUE(bitmap.allocated());
    fillWithNoise(bitmap, random);
    const Picture before = pictureOf(bitmap);
    ASSERT_EQ(Zv_SizeBitmap(&bitmap, to[0], to[1], 0), KSUCCESS);
    ASSERT_EQ(bitmap.Width, to[0]);
    ASSERT_EQ(bitmap.Height, to[1]);
    ASSERT_TRUE(pictureOf(bitmap) == nearest(before, to[0], to[1]));
    if (from[0] != to[0] || from[1] != to[1]) expectCleanPadding(bitmap);
  }
}

TEST_P(Resize, IntoAnotherBitmapAsSeen) {
  std::mt19937 random(32);
  for (const int sourceView : {0, 1, 2, 77}) {
    for (const int destinationView : {0, 1, 2, 77}) {
      SCOPED_TRACE(testing::Message() << sourceView << " to " << destinationView);
      TestBitmap source(23, 10, GetParam()), destination(40, 7, GetParam());
      source.ViewPerspective = sourceView;
      destination.ViewPerspective = destinationView;
      fillWithNoise(source, random);
      fillWithNoise(destination, random);
      const Picture before = pictureOf(source);
      const Snapshot unchanged(source);
      ASSERT_EQ(Zv_ResizeBitmap(&source, &destination), KSUCCESS);
      EXPECT_TRUE(unchanged.unchanged());
      const Picture expected = nearest(before, 40, 7);
      const bool turned = (sourceView == VIEW_BOTTOM_UP) != (destinationView == VIEW_BOTTOM_UP);
      EXPECT_TRUE(pictureOf(destination) == (turned ? upsideDown(expected) : expected));
    }
  }
}

// What is seen upright is the source's picture resized, however either is stored.
TEST_P(Resize, IntoAnotherBitmapOfATurnedView) {
  std::mt19937 random(33);
  const auto upright = [](BitmapHandle& bitmap) {
    TestBitmap copy;
    EXPECT_EQ(Zv_ChangeBitmapViewPerspective(&copy, &bitmap, VIEW_UPRIGHT), KSUCCESS);
    return pictureOf(copy);
  };
  for (const int sourceView : {1, 2, 4, 8}) {
    for (const int destinationView : {1, 2, 4, 8}) {
      if (sourceView < 4 && destinationView < 4) continue;
      SCOPED_TRACE(testing::Message() << sourceView << " to " << destinationView);
      // Halving and doubling name the same pixels from either end of a row.
      const bool turned = (sourceView >= 4) != (destinationView >= 4);
      TestBitmap source(12, 10, GetParam()), destination(turned ? 20 : 24, turned ? 24 : 20, GetParam());
      source.ViewPerspective = sourceView;
      destination.ViewPerspective = destinationView;
      fillWithNoise(source, random);
      const Snapshot unchanged(source);
      const Picture before = upright(source);
      ASSERT_EQ(Zv_ResizeBitmap(&source, &destination), KSUCCESS);
      EXPECT_TRUE(unchanged.unchanged());
      EXPECT_TRUE(upright(destination) == nearest(before, before.width * 2, before.height * 2));
    }
  }
}

TEST(SizeBitmap, ShrinkingTenColumnsToThreeTakesTheFirstFourthAndSeventh) {
  TestBitmap bitmap(10, 1, 8);
  const unsigned char row[12] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  ASSERT_EQ(Zv_PutBitmapRow(&bitmap, row, 0, 12), 12);
  ASSERT_EQ(Zv_SizeBitmap(&bitmap, 3, 1, 0), KSUCCESS);
  const Picture picture = pictureOf(bitmap);
  EXPECT_EQ(picture.pixels, (std::vector<uint32_t>{0, 3, 6}));
}

TEST(SizeBitmap, KeepsWhatTheImageIsSeenWith) {
  TestBitmap bitmap(10, 10, 4);
  RGBQUAD colors[16];
  for (unsigned i = 0; i < 16; ++i) colors[i] = {static_cast<BYTE>(i * 3), 1, 2, 0};
  ASSERT_EQ(Zv_PutBitmapColors(&bitmap, 0, 16, colors), KSUCCESS);
  bitmap.ViewPerspective = VIEW_TURNED_90;
  bitmap.XResolution = 11;
  bitmap.YResolution = 12;
  bitmap.DitheringMethod = 3;
  bitmap.Reserved1 = 99;
  bitmap.PlaybackDelay = 500;
  ASSERT_EQ(Zv_SizeBitmap(&bitmap, 3, 4, 0), KSUCCESS);
  EXPECT_EQ(bitmap.ViewPerspective, VIEW_TURNED_90);
  EXPECT_EQ(bitmap.XResolution, 11);
  EXPECT_EQ(bitmap.YResolution, 12);
  EXPECT_EQ(bitmap.DitheringMethod, 3);
  EXPECT_EQ(bitmap.Reserved1, 99u);
  EXPECT_EQ(bitmap.PlaybackDelay, 500u);
  RGBQUAD kept[16];
  ASSERT_EQ(Zv_GetBitmapColors(&bitmap, 0, 16, kept), KSUCCESS);
  EXPECT_EQ(memcmp(kept, colors, sizeof kept), 0);
}

TEST(SizeBitmap, ScalesTheRegionAlong) {
  for (const unsigned flags : {0u, unsigned{SIZE_RESAMPLE}, unsigned{SIZE_FAVOR_BLACK}}) {
    SCOPED_TRACE(flags);
    TestBitmap bitmap(20, 30, 1);
    const RECT rect = {3, 9, 9, 21};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineSet), KSUCCESS);
    ASSERT_EQ(Zv_SizeBitmap(&bitmap, 10, 90, flags), KSUCCESS);
    RECT bounds;
    ASSERT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
    const RECT expected = {1, 27, 4, 63};
    EXPECT_EQ(memcmp(&bounds, &expected, sizeof bounds), 0);
    unsigned area = 0;
    EXPECT_EQ(Zv_GetBitmapRgnArea(&bitmap, &area), KSUCCESS);
    EXPECT_EQ(area, 3u * 36u);
  }
}

TEST(SizeBitmap, SameSizeTouchesNothing) {
  TestBitmap bitmap(10, 7, 8);
  const BitmapHandle before = bitmap;
  const ProgressLog log(1, 5);
  EXPECT_EQ(Zv_SizeBitmap(&bitmap, 10, 7, 0), KSUCCESS);
  EXPECT_EQ(memcmp(&before, &bitmap, sizeof before), 0);
  EXPECT_TRUE(log.percents.empty());
}

TEST(SizeBitmap, RefusesWhatCannotBe) {
  TestBitmap bitmap(10, 7, 24);
  const Snapshot snapshot(bitmap);
  const struct {
    int width, height, status;
  } cases[] = {{0, 5, KERR_EMPTY},
               {5, 0, KERR_EMPTY},
               {0, 0, KERR_EMPTY},
               {-1, 5, KERR_NO_MEMORY},
               {5, -1, KERR_NO_MEMORY},
               {-5, -5, KERR_NO_MEMORY},
               {INT_MAX, INT_MAX, KERR_NO_MEMORY},
               {INT_MIN, INT_MIN, KERR_NO_MEMORY},
               {70000, 70000, KERR_NO_MEMORY}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << " x " << c.height);
    EXPECT_EQ(Zv_SizeBitmap(&bitmap, c.width, c.height, 0), c.status);
    EXPECT_TRUE(snapshot.unchanged());
  }
  BitmapHandle empty{};
  EXPECT_EQ(Zv_SizeBitmap(nullptr, 5, 5, 0), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_SizeBitmap(&empty, 5, 5, 0), KERR_BAD_PARAMETER);
}

TEST(ResizeBitmap, RefusesWhatCannotBe) {
  TestBitmap a(4, 4, 8), b(5, 5, 24);
  BitmapHandle empty{};
  EXPECT_EQ(Zv_ResizeBitmap(nullptr, &a), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ResizeBitmap(&a, nullptr), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ResizeBitmap(&a, &empty), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ResizeBitmap(&empty, &a), KERR_BAD_BITMAP);
  EXPECT_EQ(Zv_ResizeBitmap(&a, &b), KERR_BAD_PARAMETER);
}

// Percent k rows later is floor(100 k / rows); above 100 rows only changes are reported.
TEST(SizeBitmap, ReportsProgressAndStops) {
  for (const int height : {1, 3, 7, 100, 101, 250}) {
    SCOPED_TRACE(height);
    std::vector<int> expected = {0};
    for (int row = 1; row <= height; ++row) {
      const int percent = 100 * row / height;
      if (height <= 100 || percent != expected.back()) expected.push_back(percent);
    }
    TestBitmap bitmap(5, 50, 8);
    {
      const ProgressLog log;
      ASSERT_EQ(Zv_SizeBitmap(&bitmap, 6, height, 0), KSUCCESS);
      EXPECT_EQ(log.percents, expected);
    }
    for (const size_t stop : {size_t{1}, expected.size() / 2 + 1, expected.size()}) {
      const Snapshot snapshot(bitmap);
      const ProgressLog log(stop, 42);
      EXPECT_EQ(Zv_SizeBitmap(&bitmap, 7, height, 0), 42);
      EXPECT_EQ(log.percents.size(), stop);
      EXPECT_TRUE(snapshot.unchanged());
    }
  }
}

}  // namespace
