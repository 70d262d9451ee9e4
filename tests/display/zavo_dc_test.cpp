// Device contexts over a bitmap's own pixels: what GDI draws there is in the bitmap.
#include <zavo.h>

#include <gtest/gtest.h>
#include <string>

#include "support/guard_pages.h"
#include "support/platform_watch.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace zavotest {
namespace {

// The pixel of a seen position, and its colour.
COLORREF seenColor(BitmapHandle& bitmap, int x, int y) {
  Zv_PointToBitmap(&bitmap, VIEW_UPRIGHT, &x, &y);
  return Zv_GetPixelColor(&bitmap, y, x) & 0xFFFFFF;
}

std::vector<COLORREF> seenColors(BitmapHandle& bitmap) {
  RECT seen = {0, 0, bitmap.Width, bitmap.Height};
  Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &seen);
  std::vector<COLORREF> colors;
  for (int y = 0; y < seen.bottom; ++y) {
    for (int x = 0; x < seen.right; ++x) {
      const COLORREF color = seenColor(bitmap, x, y);
      colors.push_back((color >> 24) == 1 ? 0 : color);
    }
  }
  return colors;
}

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
          std::vector<COLORREF> expected = seenColors(bitmap);
          const bool turned = perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
          const LONG width = turned ? 31 : 45;

          HDC dc = Zv_CreateZavoDC(&bitmap);
          ASSERT_NE(dc, nullptr);
          EXPECT_EQ(bitmap.ViewPerspective, turned ? VIEW_BOTTOM_UP : perspective);
          EXPECT_EQ(bitmap.Flags & BMF_RUNLENGTH, 0u);
          EXPECT_EQ(turned ? bitmap.YResolution : bitmap.XResolution, 77);
          EXPECT_EQ(seenColors(bitmap), expected);  // the changes keep the picture
          const RECT white = {3, 5, 20, 9};
          FillRect(dc, &white, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
          SetPixel(dc, 0, 0, RGB(0, 0, 0));
          EXPECT_EQ(GetPixel(dc, 25, 25), seenColor(bitmap, 25, 25));
          GdiFlush();
          EXPECT_NE(Zv_DeleteZavoDC(dc), FALSE);

          for (LONG y = white.top; y < white.bottom; ++y) {
            for (LONG x = white.left; x < white.right; ++x) expected[static_cast<size_t>(y * width + x)] = 0xFFFFFF;
          }
          expected[0] = 0;
          EXPECT_EQ(seenColors(bitmap), expected);
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
    for (int y = 0; y < 24; ++y) {
      for (int x = 0; x < 24; ++x) {
        const bool inside = PtInRect(&seen, POINT{x, y}) != FALSE;
        ASSERT_EQ(seenColor(bitmap, x, y), inside ? 0xFFFFFFu : 0u) << x << ", " << y;
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
  unsigned points = 0;
  for (bool refused = true; refused; ++points) {
    SCOPED_TRACE(points);
    const Ledger ledger;
    {
      std::mt19937 random(8);
      TestBitmap bitmap(30, 20, 1, ALLOC_MEMORY | ALLOC_RUNLENGTH);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = VIEW_TURNED_90;
      const std::vector<COLORREF> expected = seenColors(bitmap);
      const RECT part = {3, 4, 13, 9};
      ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, CombineSet), KSUCCESS);
      HDC dc;
      std::string refusedCall;
      {
        const Refusal refusal(anyResource, points + 1);
        dc = Zv_CreateZavoDC(&bitmap);
        refused = refusal.refused() != nullptr;
        if (refused) refusedCall = refusal.refused();
      }
      // Without the screen's device context there is still one that is compatible with it, and memory need not shrink.
      const bool survived = refusedCall == "GetDC" || refusedCall == "GlobalReAlloc";
      EXPECT_EQ(dc == nullptr, refused && !survived) << refusedCall;
      EXPECT_EQ(seenColors(bitmap), expected);
      if (dc != nullptr) Zv_DeleteZavoDC(dc);
    }
    ASSERT_TRUE(ledger.balanced());
  }
  EXPECT_GE(points, 6u);
}

}  // namespace
}  // namespace zavotest
