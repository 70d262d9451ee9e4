#include "status_bar.h"

// commctrl.h needs the rest of windows.h first.
#include <commctrl.h>

#include "common/text.h"
#include "resource.h"

namespace zavoview {

namespace {

/// From the right; the message takes what is left.
constexpr int partWidths[StatusBar::PartCount] = {0, 55, 145, 150, 75, 120};

}  // namespace

void StatusBar::create(HWND parent) {
  window_ = CreateWindowExW(0, STATUSCLASSNAMEW, L"", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0, parent,
                            reinterpret_cast<HMENU>(IDC_STATUS), GetModuleHandleW(nullptr), nullptr);
}

int StatusBar::layout(int parentWidth) {
  if (!IsWindowVisible(window_)) return 0;
  int edges[PartCount];
  int right = parentWidth;
  for (int part = PartCount - 1; part >= 0; part--) {
    edges[part] = right;
    right -= partWidths[part];
  }
  SendMessageW(window_, WM_SIZE, 0, 0);
  SendMessageW(window_, SB_SETPARTS, PartCount, reinterpret_cast<LPARAM>(edges));
  RECT rect;
  GetWindowRect(window_, &rect);
  return rect.bottom - rect.top;
}

void StatusBar::set(Part part, const std::string& text) {
  if (texts_[part] == text) return;
  texts_[part] = text;
  SendMessageW(window_, SB_SETTEXTW, part, reinterpret_cast<LPARAM>(zv::wide(text).c_str()));
}

}  // namespace zavoview
