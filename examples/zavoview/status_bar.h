// The line at the foot of the window: what is going on, and what is under the mouse.
#pragma once

#include <array>
#include <string>
#include <windows.h>

namespace zavoview {

class StatusBar {
 public:
  enum Part { Message, Scale, Picture, Selection, Position, Color, PartCount };

  void create(HWND parent);
  [[nodiscard]] HWND window() const { return window_; }
  /// Takes its place at the foot of the parent window; gives its height.
  int layout(int parentWidth);
  void set(Part part, const std::string& text);

 private:
  HWND window_ = nullptr;
  std::array<std::string, PartCount> texts_;
};

}  // namespace zavoview
