// The bar with the three sliders of the painting: brightness, contrast, gamma.
#pragma once

#include <functional>
#include <windows.h>

namespace zavoview {

class AdjustBar {
 public:
  void create(HWND parent);
  [[nodiscard]] HWND window() const { return window_; }
  [[nodiscard]] bool shown() const { return IsWindowVisible(window_) != FALSE; }
  void show(bool shown) { ShowWindow(window_, shown ? SW_SHOW : SW_HIDE); }
  /// Takes its place at the top of the parent window; gives its height, 0 when it is hidden.
  int layout(int parentWidth);
  /// Back to the picture as it is.
  void reset();

  std::function<void()> onChange;  /// The painting has other settings now.

 private:
  static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void apply();

  HWND window_ = nullptr;
  int height_ = 0;
};

}  // namespace zavoview
