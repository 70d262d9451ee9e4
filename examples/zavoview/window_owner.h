// Windows that belong to an object: its address travels as the creation parameter and stays with the window.
#pragma once

#include <windows.h>

namespace zavoview {

/// The object behind a window, for its window procedure. Null for the messages that come before WM_NCCREATE.
template <typename Owner>
Owner* windowOwner(HWND window, UINT message, LPARAM lParam) {
  if (message == WM_NCCREATE) {
    const auto* const creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
  }
  return reinterpret_cast<Owner*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

}  // namespace zavoview
