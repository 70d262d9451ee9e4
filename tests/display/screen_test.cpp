// Painting on the screen that the tests run on, read back from it: 24, 16 and 8 bits.
#include "support/screen.h"

#include <zavo.h>

#include <gtest/gtest.h>

#include "display/paint_model.h"
#include "support/canvas.h"

namespace zavotest {
namespace {

// Paints a bitmap on the window, through its paint palette, and holds what is there against the model.
void expectShown(const ScreenWindow& window, BitmapHandle& bitmap, const PaintRects& rects, unsigned flags) {
  Zv_SetDisplayMode(~0u, flags);
  window.clear();
  std::vector<uint32_t> expected = window.pixels();
  PaintModel model(ScreenWindow::width, ScreenWindow::height, expected);
  int deviceBits = 0, mode = -1;
  Zv_GetDitherFlags(window.dc(), &bitmap, &deviceBits, &mode);
  EXPECT_EQ(deviceBits, screenBits() >= 16 ? 24 : 8);
  model.paint(bitmap, rects, mode, deviceBits);
  const SelectedPalette palette(window.dc(), Zv_CreatePaintPalette(window.dc(), &bitmap));
  ASSERT_EQ(Zv_PaintDC(window.dc(), &bitmap, PaintRects::pointer(rects.source), PaintRects::pointer(rects.sourceClip),
                       &rects.destination, PaintRects::pointer(rects.destinationClip), SRCCOPY),
            KSUCCESS);
  EXPECT_TRUE(showsOnScreen(window.pixels(), expected)) << "mode " << mode << "\n" << describe(bitmap, rects);
}

TEST(Screen, ShowsBitmapsOfEveryDepthAndPerspective) {
  const ScreenWindow window;
  const PaintSettings settings;
  for (const int bits : allDepths) {
    for (const int perspective : {1, 2, 4, 8}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      std::mt19937 random(static_cast<unsigned>(bits * 16 + perspective));
      TestBitmap bitmap(45, 38, bits);
      fillWithNoise(bitmap, random);
      bitmap.ViewPerspective = perspective;
      PaintRects rects = randomRects(random, bitmap, ScreenWindow::width, ScreenWindow::height);
      rects.source.reset();
      rects.sourceClip.reset();
      for (const unsigned flags : {unsigned{PAINT_DITHER}, unsigned{PAINT_DITHER | PAINT_INDEX_COLORS},
                                   unsigned{PAINT_DITHER | PAINT_ORDERED_DITHER | PAINT_INDEX_COLORS},
                                   unsigned{PAINT_INDEX_COLORS}, unsigned{PAINT_DITHER | PAINT_FIXED_PALETTE}}) {
        expectShown(window, bitmap, rects, flags);
      }
      if (HasFailure()) return;
    }
  }
}

TEST(Screen, ShowsAdjustedPicturesAndGrayLevels) {
  const ScreenWindow window;
  std::mt19937 random(2);
  const PaintSettings settings;
  PaintSettings::adjust(-100, 300, 160);
  PaintRects rects;
  rects.destination = {3, 2, 30, 21};
  for (const int bits : {1, 8, 24}) {
    SCOPED_TRACE(bits);
    TestBitmap bitmap(60, 50, bits);
    fillWithNoise(bitmap, random);
    expectShown(window, bitmap, rects, PAINT_DITHER | PAINT_INDEX_COLORS | PAINT_GRAY_1BIT);
  }
}

}  // namespace
}  // namespace zavotest
