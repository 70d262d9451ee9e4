#include "busy.h"

#include <zavo.h>

#include "common/text.h"

namespace zavoview {

namespace {

/// Quick operations come and go without flicker.
constexpr DWORD quietMilliseconds = 200;

// The library's callback carries no user data: what it needs lives here.
struct State {
  StatusBar* status = nullptr;
  std::string work;
  DWORD start = 0;
};

State& state() {
  static State only;
  return only;
}

bool escapePressed() {
  MSG message;
  while (PeekMessageW(&message, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE))
    if (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE) return true;
  return false;
}

int ZAVO_CALL report(int percent) {
  if (GetTickCount() - state().start >= quietMilliseconds) {
    state().status->set(StatusBar::Message, zv::format("%s: %d %% (Esc stops)", state().work.c_str(), percent));
    UpdateWindow(state().status->window());
  }
  return escapePressed() ? 0 : 1;
}

}  // namespace

Busy::Busy(StatusBar& status, std::string work) {
  state() = {&status, std::move(work), GetTickCount()};
  SetCursor(LoadCursorW(nullptr, IDC_WAIT));
  Zv_SetStatusCallBack(report);
}

Busy::~Busy() {
  Zv_SetStatusCallBack(nullptr);
  SetCursor(LoadCursorW(nullptr, IDC_ARROW));
  state().status->set(StatusBar::Message, "");
}

}  // namespace zavoview
