// Describing, creating and freeing bitmaps.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>

namespace {

TEST(InitBitmap, RowsArePaddedToFourBytes) {
  const struct {
    int width, bits;
    unsigned rowBytes;
  } cases[] = {{1, 1, 4}, {33, 1, 8}, {3, 24, 12}, {11, 3, 8}, {1, 32, 4}, {3, 16, 8}, {5, 7, 8}};
  for (const auto& c : cases) {
    BitmapHandle bitmap;
    ASSERT_EQ(Zv_InitBitmap(&bitmap, c.width, 7, c.bits), KSUCCESS);
    EXPECT_EQ(bitmap.BytesPerLine, c.rowBytes) << c.width << " pixels of " << c.bits << " bits";
    EXPECT_EQ(bitmap.DataSize, 7 * c.rowBytes);
  }
}

TEST(InitBitmap, UnsupportedDepthLeavesTheRecordZero) {
  for (const int bits : {-1, 0, 9, 15, 17, 25, 33}) {
    BitmapHandle bitmap;
    memset(&bitmap, 0xFF, sizeof bitmap);
    EXPECT_EQ(Zv_InitBitmap(&bitmap, 10, 10, bits), KERR_BAD_BPP);
    const BitmapHandle zero{};
    EXPECT_EQ(memcmp(&bitmap, &zero, sizeof bitmap), 0);
  }
}

}  // namespace
