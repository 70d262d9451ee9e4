// The screen that the tests run on: a window whose pixels can be read back.
#pragma once

#include <zavo.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "support/canvas.h"

namespace zavotest {

inline int screenBits() {
  HDC screen = GetDC(nullptr);
  const int bits = GetDeviceCaps(screen, BITSPIXEL);
  ReleaseDC(nullptr, screen);
  return bits;
}

// What a screen of so many bits shows for these colours: the same on 24 bits, within 8 levels on 16, and on 8 bits one
// of the platform's own colours, which is the same for every pixel of a colour and not far off.
inline testing::AssertionResult showsOnScreen(const std::vector<uint32_t>& shown,
                                              const std::vector<uint32_t>& expected) {
  const int bits = screenBits();
  const int tolerance = bits >= 24 ? 0 : bits == 16 ? 8 : 96;
  std::map<uint32_t, uint32_t> colors;
  for (size_t i = 0; i < shown.size(); ++i) {
    int most = 0;
    for (int shift = 0; shift < 24; shift += 8) {
      const auto channel = [shift](uint32_t color) { return static_cast<int>(color >> shift & 255); };
      most = std::max(most, std::abs(channel(shown[i]) - channel(expected[i])));
    }
    const uint32_t same = colors.try_emplace(expected[i], shown[i]).first->second;
    if (most > tolerance || same != shown[i]) {
      return testing::AssertionFailure() << "pixel " << i << std::hex << " is " << shown[i] << " instead of "
                                         << expected[i] << ", which was shown as " << same;
    }
  }
  return testing::AssertionSuccess();
}

class ScreenWindow {
 public:
  static constexpr int width = 80;
  static constexpr int height = 60;

  ScreenWindow()
      : window_(CreateWindowExA(WS_EX_TOPMOST, "STATIC", "", WS_POPUP | WS_VISIBLE, 8, 8, width, height, nullptr,
                                nullptr, nullptr, nullptr)) {
    UpdateWindow(window_);
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    dc_ = GetDC(window_);
  }
  ScreenWindow(const ScreenWindow&) = delete;
  ScreenWindow& operator=(const ScreenWindow&) = delete;
  ~ScreenWindow() {
    ReleaseDC(window_, dc_);
    DestroyWindow(window_);
  }

  [[nodiscard]] HWND handle() const { return window_; }
  [[nodiscard]] HDC dc() const { return dc_; }
  void clear() const { PatBlt(dc_, 0, 0, width, height, BLACKNESS); }

  // 0xRRGGBB, row by row from the top.
  [[nodiscard]] std::vector<uint32_t> pixels() const {
    const Canvas copy(width, height);
    BitBlt(copy.dc(), 0, 0, width, height, dc_, 0, 0, SRCCOPY);
    return copy.pixels();
  }

 private:
  HWND window_;
  HDC dc_ = nullptr;
};

}  // namespace zavotest
