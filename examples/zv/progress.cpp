// On a terminal one line is written over and over; elsewhere each tenth is added to it ("size: 0 10 20 ... 100 %").
// Ctrl+C stops the running operation through the callback, so that the program can leave in an orderly way.
#include "progress.h"

#include <zavo.h>

#include <atomic>
#include <cstdio>

namespace zv {

namespace {

// The library's callback carries no user data: what it needs lives here.
struct State {
  std::string label;
  int shownPercent = -1;
  bool shown = false;
  bool onTerminal = false;
  std::atomic<bool> stopRequested = false;
};

State& state() {
  static State only;
  return only;
}

void show(int percent) {
  const int step = state().onTerminal ? percent : percent / 10 * 10;
  if (step == state().shownPercent) return;
  if (state().onTerminal)
    std::fprintf(stderr, "\r%s: %d %%", state().label.c_str(), step);
  else if (state().shownPercent < 0)
    std::fprintf(stderr, "%s: %d", state().label.c_str(), step);
  else
    std::fprintf(stderr, " %d", step);
  state().shownPercent = step;
  std::fflush(stderr);
}

int ZAVO_CALL report(int percent) {
  if (state().shown) show(percent);
  return state().stopRequested ? 0 : 1;
}

BOOL WINAPI onConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  state().stopRequested = true;
  return TRUE;
}

}  // namespace

void enableProgress(bool always) {
  DWORD mode = 0;
  state().onTerminal = GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
  state().shown = always || state().onTerminal;
  SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

ProgressLine::ProgressLine(std::string label) {
  state().label = std::move(label);
  state().shownPercent = -1;
  Zv_SetStatusCallBack(report);
}

ProgressLine::~ProgressLine() {
  Zv_SetStatusCallBack(nullptr);
  if (state().shownPercent < 0) return;
  if (state().onTerminal)
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(state().label.size() + 8), "");
  else
    std::fprintf(stderr, " %%\n");
}

}  // namespace zv
