// The small dialogs that ask for numbers.
#pragma once

#include <optional>
#include <windows.h>

namespace zavoview {

struct ColorChoice {
  unsigned count = 16;   /// Colours, 2 to 256.
  unsigned palette = 0;  /// A COLORRES_ palette option.
  int dithering = 0;     /// A dithering method, 0 to 8.
};

struct SizeChoice {
  int width = 0;
  int height = 0;
  bool smooth = true;
};

/// These give nothing when the user cancels.
std::optional<ColorChoice> askColors(HWND owner);
std::optional<SizeChoice> askSize(HWND owner, int width, int height);

}  // namespace zavoview
