// Painting on the screen that the tests run on, read back from it, and its device-dependent bitmaps, there and back:
// 24, 16 and 8 bits.
#include "support/screen.h"

#include <zavo.h>

#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"
#include "support/platform_watch.h"
#include "support/seen_picture.h"

namespace zavotest {
namespace {

// What the display mode leads to on the screen; the palette is to be selected, or null.
void paintAsOnScreen(Picture& canvas, BitmapHandle& bitmap, const PaintRects& rects, HPALETTE& palette) {
  HDC screen = GetDC(nullptr);
  int deviceBits = 0, mode = -1;
  Zv_GetDitherFlags(screen, &bitmap, &deviceBits, &mode);
  EXPECT_EQ(deviceBits, screenBits() >= 16 ? 24 : 8);
  paintModel(canvas, bitmap, rects, mode, deviceBits, currentAdjustTable());
  palette = Zv_CreatePaintPalette(screen, &bitmap);
  ReleaseDC(nullptr, screen);
}

TEST(Screen, ShowsBitmapsOfEveryDepthAndPerspective) {
  const ScreenWindow window;
  for (const int bits : allDepths) {
    for (const int perspective : allPerspectives) {
      std::mt19937 random(static_cast<unsigned>(bits * 16 + perspective));
      TestBitmap bitmap(45, 38, bits);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = perspective;
      PaintRects rects = randomRects(random, bitmap, ScreenWindow::width, ScreenWindow::height);
      rects.source.reset();
      rects.sourceClip.reset();
      for (const unsigned flags :
           {unsigned{PAINT_DITHER}, unsigned{PAINT_DITHER | PAINT_INDEX_COLORS}, unsigned{PAINT_INDEX_COLORS},
            unsigned{PAINT_DITHER | PAINT_ORDERED_DITHER | PAINT_INDEX_COLORS},
            unsigned{PAINT_DITHER | PAINT_FIXED_PALETTE}, unsigned{PAINT_INDEX_COLORS | PAINT_GRAY_1BIT}}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective << ", mode " << flags);
        const PaintSettings settings(flags);
        if ((flags & PAINT_GRAY_1BIT) != 0) PaintSettings::adjust(-100, 300, 160);
        Picture expected(ScreenWindow::width, ScreenWindow::height);
        HPALETTE colors = nullptr;
        paintAsOnScreen(expected, bitmap, rects, colors);
        window.clear();
        const SelectedPalette palette(window.dc(), colors);
        ASSERT_EQ(Zv_PaintDC(window.dc(), &bitmap, nullptr, nullptr, &rects.destination,
                             PaintRects::pointer(rects.destinationClip), SRCCOPY),
                  KSUCCESS);
        ASSERT_TRUE(showsOnScreen(window.pixels(), expected.pixels));
      }
    }
  }
}

TEST(Ddb, HoldsThePictureAsThePaintEngineShowsIt) {
  HDC screen = GetDC(nullptr);
  for (const int bits : allDepths) {
    for (const int perspective : allPerspectives) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      std::mt19937 random(static_cast<unsigned>(bits * 16 + perspective));
      TestBitmap bitmap(41, 27, bits);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = perspective;
      const Picture seen = seenOf(bitmap);

      // The thread's own flags do not matter, and are there again.
      const PaintSettings settings(PAINT_INDEX_COLORS);
      HBITMAP ddb = Zv_ConvertToDDB(bits % 2 != 0 ? nullptr : screen, &bitmap);
      ASSERT_NE(ddb, nullptr);
      EXPECT_EQ(Zv_GetDisplayMode(), unsigned{PAINT_INDEX_COLORS});
      BITMAP described = {};
      GetObjectA(ddb, sizeof described, &described);
      EXPECT_EQ(described.bmBitsPixel, screenBits());

      Zv_SetDisplayMode(~0u, PAINT_DITHER);
      Picture expected(seen.width, seen.height);
      PaintRects rects;
      rects.destination = {0, 0, seen.width, seen.height};
      HPALETTE palette = nullptr;
      paintAsOnScreen(expected, bitmap, rects, palette);
      TestBitmap back;
      ASSERT_EQ(Zv_ChangeFromDDB(screen, &back, ddb, palette), KSUCCESS);
      EXPECT_EQ(GetObjectType(ddb), 0u);
      EXPECT_EQ(back.BitsPerPixel, screenBits() == 8 ? 8 : 24);
      const Picture shown = seenOf(back);
      EXPECT_EQ(shown.width, seen.width);
      ASSERT_EQ(shown.height, seen.height);
      EXPECT_TRUE(showsOnScreen(shown.pixels, expected.pixels));
    }
  }
  ReleaseDC(nullptr, screen);
}

TEST(Ddb, OneBitBitmapsComeBackAsTheyAre) {
  HDC screen = GetDC(nullptr);
  std::mt19937 random(3);
  for (int width = 1; width <= 70; ++width) {
    SCOPED_TRACE(width);
    const int stride = (width + 15) / 16 * 2;
    std::vector<uint8_t> bits(static_cast<size_t>(stride) * 9);
    for (auto& byte : bits) byte = static_cast<uint8_t>(random());
    Picture expected(width, 9);
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < width; ++x) {
        const bool set = (bits[static_cast<size_t>(y * stride + x / 8)] >> (7 - x % 8) & 1) != 0;
        expected.at(x, y) = set ? 0xFFFFFF : 0;
      }
    }
    HBITMAP mono = CreateBitmap(width, 9, 1, 1, bits.data());
    TestBitmap bitmap;
    ASSERT_EQ(Zv_ConvertFromDDB(screen, &bitmap, mono, nullptr), KSUCCESS);
    EXPECT_EQ(bitmap.BitsPerPixel, 1);
    EXPECT_EQ(seenOf(bitmap), expected);
    DeleteObject(mono);
  }
  ReleaseDC(nullptr, screen);
}

TEST(Ddb, ChangingFreesTheBitmapOnSuccessOnly) {
  TestBitmap bitmap(9, 9, 24);
  {
    const Refusal refusal("CreateCompatibleBitmap", 1);
    EXPECT_EQ(Zv_ChangeToDDB(nullptr, &bitmap), nullptr);
  }
  EXPECT_TRUE(bitmap.allocated());
  HBITMAP ddb = Zv_ChangeToDDB(nullptr, &bitmap);
  EXPECT_NE(ddb, nullptr);
  EXPECT_FALSE(bitmap.allocated());
  EXPECT_EQ(Zv_ChangeToDDB(nullptr, &bitmap), nullptr);
  EXPECT_EQ(Zv_ConvertToDDB(nullptr, nullptr), nullptr);

  HDC screen = GetDC(nullptr);
  EXPECT_EQ(Zv_ChangeFromDDB(screen, nullptr, ddb, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ChangeFromDDB(screen, &bitmap, nullptr, nullptr), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ConvertFromDDB(screen, &bitmap, static_cast<HBITMAP>(GetStockObject(WHITE_BRUSH)), nullptr),
            KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ConvertFromDDB(screen, &bitmap, ddb, nullptr), KSUCCESS);
  EXPECT_NE(GetObjectType(ddb), 0u);
  DeleteObject(ddb);
  ReleaseDC(nullptr, screen);
}

}  // namespace
}  // namespace zavotest
