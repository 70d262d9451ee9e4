// Device contexts over a bitmap's own pixels: what GDI draws there, within the region, is in the bitmap.
#include <zavo.h>

#include <gtest/gtest.h>

#include "support/guard_pages.h"
#include "support/platform_watch.h"
#include "support/seen_picture.h"
#include "support/snapshot.h"

namespace zavotest {
namespace {

TEST(ZavoDC, DrawsIntoEveryDepthPerspectiveAndStorage) {
  if (GuardPages::active()) GTEST_SKIP() << "GDI draws into the section";
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const int perspective : allPerspectives) {
      for (const int storage : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
        for (const bool clipped : {false, true}) {
          SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", storage " << storage
                                          << (clipped ? ", clipped" : ""));
          std::mt19937 random(7);
          TestBitmap bitmap(45, 31, bits, storage);
          fillWithNoise(bitmap, random);
          bitmap.ViewPerspective = perspective;
          bitmap.XResolution = 77;
          bitmap.DitheringMethod = 3;
          RECT drawn = {0, 0, bitmap.Width, bitmap.Height};
          if (clipped) {
            drawn = {3, 4, 13, 9};
            ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &drawn, CombineSet), KSUCCESS);
          }
          Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &drawn);
          Picture expected = seenOf(bitmap);
          const bool turned = perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
          const uint32_t channelBits = bits == 16 ? 0xF8F8F8 : 0xFFFFFF;

          HDC dc = Zv_CreateZavoDC(&bitmap);
          ASSERT_NE(dc, nullptr);
          EXPECT_EQ(bitmap.ViewPerspective, turned ? VIEW_BOTTOM_UP : perspective);
          EXPECT_EQ(bitmap.Flags & BMF_RUNLENGTH, 0u);
          EXPECT_EQ(turned ? bitmap.YResolution : bitmap.XResolution, 77);
          EXPECT_EQ(bitmap.DitheringMethod, 3);
          EXPECT_EQ(seenOf(bitmap), expected);  // the changes keep the picture
          PatBlt(dc, -5, -5, 25, 30, WHITENESS);
          SetPixel(dc, 0, 0, RGB(0, 0, 0));
          GdiFlush();
          EXPECT_NE(Zv_DeleteZavoDC(dc), FALSE);

          for (LONG y = drawn.top; y < std::min(drawn.bottom, 25L); ++y) {
            for (LONG x = drawn.left; x < std::min(drawn.right, 20L); ++x) {
              expected.at(x, y) = x == 0 && y == 0 ? 0 : channelBits;
            }
          }
          EXPECT_EQ(seenOf(bitmap), expected);
        }
      }
    }
  }
}

TEST(ZavoDC, RefusesWhatGdiCannotDrawOn) {
  EXPECT_EQ(Zv_CreateZavoDC(nullptr), nullptr);
  TestBitmap none;
  EXPECT_EQ(Zv_CreateZavoDC(&none), nullptr);
  for (const int bits : {2, 3, 5, 6, 7}) {
    TestBitmap bitmap(9, 9, bits);
    bitmap.ViewPerspective = VIEW_TURNED_90;
    const Snapshot before(bitmap);
    EXPECT_EQ(Zv_CreateZavoDC(&bitmap), nullptr);
    EXPECT_TRUE(before.unchanged());
  }
}

// A failed call may have changed storage and perspective, but not the picture.
TEST(ZavoDC, KeepsThePictureAndGivesEverythingBackWhenAResourceIsRefused) {
  bool refused = true;
  for (unsigned n = 1; refused; ++n) {
    SCOPED_TRACE(n);
    const Ledger ledger;
    {
      std::mt19937 random(8);
      TestBitmap bitmap(30, 20, 1, ALLOC_MEMORY | ALLOC_RUNLENGTH);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = VIEW_TURNED_90;
      const RECT part = {3, 4, 13, 9};
      ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, CombineSet), KSUCCESS);
      const Picture expected = seenOf(bitmap);
      {
        const Refusal refusal(anyResource, n);
        HDC dc = Zv_CreateZavoDC(&bitmap);
        if (dc != nullptr) Zv_DeleteZavoDC(dc);
        refused = refusal.refused() != nullptr;
        EXPECT_TRUE(dc != nullptr || refused);
      }
      EXPECT_EQ(seenOf(bitmap), expected);
    }
    EXPECT_TRUE(ledger.balanced());
  }
}

}  // namespace
}  // namespace zavotest
