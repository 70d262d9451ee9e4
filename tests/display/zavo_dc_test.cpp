// Device contexts over a bitmap's own pixels: what GDI draws there is in the bitmap.
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
    for (const int perspective : {1, 2, 4, 8}) {
      for (const int storage : {int{ALLOC_MEMORY}, ALLOC_MEMORY | ALLOC_RUNLENGTH}) {
        if (bits != 1 && storage != ALLOC_MEMORY) continue;
        SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", storage " << storage);
        const Ledger ledger;
        {
          std::mt19937 random(7);
          TestBitmap bitmap(45, 31, bits, storage);
          fillWithNoise(bitmap, random);
          bitmap.ViewPerspective = perspective;
          bitmap.XResolution = 77;
          Picture expected = seenOf(bitmap);
          const bool turned = perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
          const uint32_t channelBits = bits == 16 ? 0xF8F8F8 : 0xFFFFFF;

          HDC dc = Zv_CreateZavoDC(&bitmap);
          ASSERT_NE(dc, nullptr);
          EXPECT_EQ(bitmap.ViewPerspective, turned ? VIEW_BOTTOM_UP : perspective);
          EXPECT_EQ(bitmap.Flags & BMF_RUNLENGTH, 0u);
          EXPECT_EQ(turned ? bitmap.YResolution : bitmap.XResolution, 77);
          EXPECT_EQ(seenOf(bitmap), expected);  // the changes keep the picture
          const RECT white = {3, 5, 20, 9};
          FillRect(dc, &white, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
          SetPixel(dc, 0, 0, RGB(0, 0, 0));
          const COLORREF read = GetPixel(dc, 25, 25);
          EXPECT_EQ(RGB(GetBValue(read), GetGValue(read), GetRValue(read)) & channelBits, expected.at(25, 25));
          GdiFlush();
          EXPECT_NE(Zv_DeleteZavoDC(dc), FALSE);

          for (LONG y = white.top; y < white.bottom; ++y) {
            for (LONG x = white.left; x < white.right; ++x) expected.at(x, y) = channelBits;
          }
          expected.at(0, 0) = 0;
          EXPECT_EQ(seenOf(bitmap), expected);
        }
        EXPECT_TRUE(ledger.balanced());
      }
    }
  }
}

TEST(ZavoDC, IsClippedToTheRegion) {
  if (GuardPages::active()) GTEST_SKIP() << "GDI draws into the section";
  for (const int perspective : {1, 2, 4, 8}) {
    SCOPED_TRACE(perspective);
    TestBitmap bitmap(40, 24, 24);
    bitmap.ViewPerspective = perspective;
    const RECT part = {3, 4, 13, 9};
    ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, CombineSet), KSUCCESS);
    RECT seen = part;
    Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &seen);

    HDC dc = Zv_CreateZavoDC(&bitmap);
    ASSERT_NE(dc, nullptr);
    PatBlt(dc, -5, -5, 100, 100, WHITENESS);
    GdiFlush();
    Zv_DeleteZavoDC(dc);
    const Picture picture = seenOf(bitmap);
    for (int y = 0; y < 24; ++y) {
      for (int x = 0; x < 24; ++x) {
        const bool inside = PtInRect(&seen, POINT{x, y}) != FALSE;
        ASSERT_EQ(picture.at(x, y), inside ? 0xFFFFFFu : 0u) << x << ", " << y;
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
        if (HDC dc = Zv_CreateZavoDC(&bitmap)) {
          Zv_DeleteZavoDC(dc);
        } else {
          EXPECT_NE(refusal.refused(), nullptr);
        }
        refused = refusal.refused() != nullptr;
      }
      EXPECT_EQ(seenOf(bitmap), expected);
    }
    EXPECT_TRUE(ledger.balanced());
  }
}

}  // namespace
}  // namespace zavotest
