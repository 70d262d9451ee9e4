// Capturing what stands on the screen.
#include <zavo.h>

#include <climits>
#include <gtest/gtest.h>

#include "support/platform_watch.h"
#include "support/refusals.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

constexpr int side = 120;

// The colour that the window shows at a point: every pixel differs from its neighbours.
uint32_t shownAt(int x, int y) {
  return static_cast<uint32_t>((x * 2) << 16 | (y * 2) << 8 | (x * 7 + y * 13) % 256);
}

// A window of `side` pixels on the screen, with a picture drawn by the graphics interface.
class ShownWindow {
 public:
  ShownWindow() {
    window_ = CreateWindowExA(WS_EX_TOPMOST, "STATIC", "shown", WS_POPUP | WS_VISIBLE, 40, 30, side, side, nullptr,
                              nullptr, nullptr, nullptr);
    dc_ = GetDC(window_);
    for (const ULONGLONG start = GetTickCount64(); GetTickCount64() - start < 5000;) {
      pump();
      draw();
      if (GetPixel(dc_, side - 1, side - 1) == RGB(238, 238, (119 * 20) % 256)) break;
      Sleep(20);
    }
  }
  ShownWindow(const ShownWindow&) = delete;
  ShownWindow& operator=(const ShownWindow&) = delete;
  ~ShownWindow() {
    ReleaseDC(window_, dc_);
    DestroyWindow(window_);
  }
  [[nodiscard]] HDC dc() const { return dc_; }

 private:
  static void pump() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
  }
  void draw() const {
    std::vector<uint32_t> pixels;
    for (int y = 0; y < side; ++y) {
      for (int x = 0; x < side; ++x) pixels.push_back(shownAt(x, y));
    }
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), side, -side, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    SetDIBitsToDevice(dc_, 0, 0, side, side, 0, 0, 0, side, pixels.data(), &info, DIB_RGB_COLORS);
    GdiFlush();
  }

  HWND window_;
  HDC dc_;
};

TEST(Capture, TakesARectangle) {
  const ShownWindow window;
  const POINT origin = {40, 30};
  HDC screen = GetDC(nullptr);
  struct {
    const char* what;
    RECT rect;
  } const cases[] = {
      {"all", {0, 0, side, side}},
      {"one pixel", {17, 23, 18, 24}},
      {"odd sizes", {3, 5, 40, 16}},
      {"to the edge", {90, 100, side, side}},
      {"upside down: as many rows downwards from the top", {10, 60, 50, 35}},
  };
  for (const auto& part : cases) {
    for (const bool ofScreen : {false, true}) {
      SCOPED_TRACE(testing::Message() << part.what << (ofScreen ? ", from the screen" : ", from the window"));
      RECT rect = part.rect;
      if (ofScreen) OffsetRect(&rect, origin.x, origin.y);
      TestBitmap bitmap;
      ASSERT_EQ(Zv_ScreenCaptureBitmap(ofScreen ? screen : window.dc(), &bitmap, &rect), KSUCCESS);
      EXPECT_EQ(bitmap.BitsPerPixel, 24);
      Picture expected(part.rect.right - part.rect.left, std::abs(part.rect.bottom - part.rect.top));
      for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
          expected.at(x, y) = shownAt(part.rect.left + x, part.rect.top + y);
        }
      }
      EXPECT_EQ(seenOf(bitmap), expected);
    }
  }
  ReleaseDC(nullptr, screen);
}

TEST(Capture, RefusesWhatCannotBeTaken) {
  HDC screen = GetDC(nullptr);
  TestBitmap bitmap;
  const RECT good = {0, 0, 10, 10};
  EXPECT_EQ(Zv_ScreenCaptureBitmap(screen, nullptr, &good), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_ScreenCaptureBitmap(screen, &bitmap, nullptr), KERR_BAD_PARAMETER);
  struct {
    RECT rect;
    int code;
  } const cases[] = {
      {{5, 5, 5, 9}, KERR_BAD_PARAMETER},         {{5, 5, 9, 5}, KERR_BAD_PARAMETER},
      {{9, 5, 5, 9}, KERR_BAD_PARAMETER},         {{INT_MAX, 0, INT_MIN, 9}, KERR_BAD_PARAMETER},
      {{INT_MIN, 0, INT_MAX, 9}, KERR_NO_MEMORY}, {{0, INT_MAX, 9, INT_MIN}, KERR_NO_MEMORY},
      {{0, 0, 40000, 40000}, KERR_NO_MEMORY},
  };
  for (const auto& bad : cases) {
    SCOPED_TRACE(testing::Message() << bad.rect.left << ", " << bad.rect.top << ", " << bad.rect.right << ", "
                                    << bad.rect.bottom);
    EXPECT_EQ(Zv_ScreenCaptureBitmap(screen, &bitmap, &bad.rect), bad.code);
    EXPECT_EQ(bitmap.Flags, 0u);
  }
  const Refusal refused("CreateCompatibleDC", 1);
  EXPECT_EQ(Zv_ScreenCaptureBitmap(screen, &bitmap, &good), KERR_BAD_PARAMETER);
  ReleaseDC(nullptr, screen);
}

TEST(Capture, Unwinds) {
  HDC screen = GetDC(nullptr);
  RefusalRules rules;
  rules.codes = {KERR_NO_MEMORY, KERR_BAD_PARAMETER};  // the latter for the device context
  rules.survived = {"GetDC"};                          // for the system palette and the resolution
  rules.leastPoints = 5;
  refuseEachResource(rules, [&](RefusalRound& round) {
    TestBitmap bitmap;
    const RECT rect = {0, 0, 37, 11};
    round.keeps(bitmap);
    round.run([&] { return Zv_ScreenCaptureBitmap(screen, &bitmap, &rect); });
  });
  ReleaseDC(nullptr, screen);
}

}  // namespace
