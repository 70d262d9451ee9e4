// Capturing what stands on the screen, of 24 or of 8 bits.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "support/refusals.h"
#include "support/screen.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

TEST(Capture, TakesARectangleInTheScreensColours) {
  // Every pixel differs from its neighbours; a palette screen has these colours.
  constexpr uint32_t fixedColors[] = {0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0x800000, 0xC0C0C0, 0x008080};
  const ScreenWindow window;
  Picture shown(ScreenWindow::width, ScreenWindow::height);
  for (size_t i = 0; i < shown.pixels.size(); ++i) {
    shown.pixels[i] =
        screenBits() == 8 ? fixedColors[(i * 5 + i / 80) % 8] : static_cast<uint32_t>(i * 0x0A0503 & 0xFFFFFF);
  }
  BITMAPINFO info = {};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), shown.width, -shown.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  HDC screen = GetDC(nullptr);
  for (const RECT& part : {RECT{0, 0, 80, 60}, RECT{17, 23, 18, 24}, RECT{3, 5, 40, 16}, RECT{60, 40, 80, 60},
                           RECT{10, 50, 50, 25}}) {  // upside down: as many rows downwards from the top
    for (const bool ofScreen : {false, true}) {
      SCOPED_TRACE(testing::Message() << part.left << ", " << part.top << (ofScreen ? " of the screen" : ""));
      RECT rect = part;
      if (ofScreen) MapWindowPoints(window.handle(), nullptr, reinterpret_cast<POINT*>(&rect), 2);
      Picture expected(part.right - part.left, std::abs(part.bottom - part.top));
      for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) expected.at(x, y) = shown.orZero(part.left + x, part.top + y);
      }
      TestBitmap bitmap;
      // What is drawn is on the screen a moment later.
      for (int attempt = 0; attempt < 100 && !(bitmap.allocated() && seenOf(bitmap) == expected); ++attempt) {
        Sleep(attempt == 0 ? 0 : 20);
        SetDIBitsToDevice(window.dc(), 0, 0, 80, 60, 0, 0, 0, 60, shown.pixels.data(), &info, DIB_RGB_COLORS);
        GdiFlush();
        Zv_FreeBitmap(&bitmap);
        ASSERT_EQ(Zv_ScreenCaptureBitmap(ofScreen ? screen : window.dc(), &bitmap, &rect), KSUCCESS);
      }
      EXPECT_EQ(bitmap.BitsPerPixel, screenBits() == 8 ? 8 : 24);
      EXPECT_EQ(seenOf(bitmap), expected);
    }
  }
  ReleaseDC(nullptr, screen);
}

TEST(Capture, RefusesWhatCannotBeTakenAndUnwinds) {
  HDC screen = GetDC(nullptr);
  TestBitmap bitmap;
  const RECT good = {0, 0, 37, 11};
  EXPECT_EQ(Zv_ScreenCaptureBitmap(screen, nullptr, &good), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ScreenCaptureBitmap(screen, &bitmap, nullptr), KERR_BAD_PARAMETER);
  const struct {
    RECT rect;
    int code;
  } cases[] = {
      {{5, 5, 5, 9}, KERR_BAD_PARAMETER},         {{5, 5, 9, 5}, KERR_BAD_PARAMETER},
      {{9, 5, 5, 9}, KERR_BAD_PARAMETER},         {{INT_MAX, 0, INT_MIN, 9}, KERR_BAD_PARAMETER},
      {{INT_MIN, 0, INT_MAX, 9}, KERR_NO_MEMORY}, {{0, INT_MAX, 9, INT_MIN}, KERR_NO_MEMORY},
      {{0, 0, 40000, 40000}, KERR_NO_MEMORY},
  };
  for (const auto& bad : cases) {
    EXPECT_EQ(Zv_ScreenCaptureBitmap(screen, &bitmap, &bad.rect), bad.code) << bad.rect.left << ", " << bad.rect.top;
    EXPECT_EQ(bitmap.Flags, 0u);
  }
  RefusalRules rules;
  rules.codes = {KERR_NO_MEMORY, KERR_BAD_PARAMETER};  // the latter for the device context
  rules.survived = {"GetDC"};                          // for the system palette and the resolution
  if (screenBits() == 8) rules.survived.insert(rules.survived.end(), {"GlobalAlloc", "CreatePalette"});
  rules.leastPoints = 5;
  refuseEachResource(rules, [&](RefusalRound& round) {
    TestBitmap captured;
    round.keeps(captured);
    round.run([&] { return Zv_ScreenCaptureBitmap(screen, &captured, &good); });
  });
  ReleaseDC(nullptr, screen);
}

}  // namespace
