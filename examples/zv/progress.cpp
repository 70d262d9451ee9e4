// On a terminal one line is written over and over; elsewhere each tenth is added to it ("size: 0 10 20 ... 100 %").
// Ctrl+C stops the running operation through the callback, so that the program can leave in an orderly way.
#include "progress.h"

#include <zavo.h>

#include <atomic>
#include <cstdio>

namespace zv {

namespace {

// The library's callback carries no user data: what it needs lives here.
std::string currentLabel;
int shownPercent = -1;
bool shown = false;
bool onTerminal = false;
std::atomic<bool> stopRequested = false;

void show(int percent) {
  const int step = onTerminal ? percent : percent / 10 * 10;
  if (step == shownPercent) return;
  if (onTerminal)
    std::fprintf(stderr, "\r%s: %d %%", currentLabel.c_str(), step);
  else if (shownPercent < 0)
    std::fprintf(stderr, "%s: %d", currentLabel.c_str(), step);
  else
    std::fprintf(stderr, " %d", step);
  shownPercent = step;
  std::fflush(stderr);
}

int ZAVO_CALL report(int percent) {
  if (shown) show(percent);
  return stopRequested ? 0 : 1;
}

BOOL WINAPI onConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  stopRequested = true;
  return TRUE;
}

}  // namespace

void enableProgress(bool always) {
  DWORD mode = 0;
  onTerminal = GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
  shown = always || onTerminal;
  SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

ProgressLine::ProgressLine(std::string label) {
  currentLabel = std::move(label);
  shownPercent = -1;
  Zv_SetStatusCallBack(report);
}

ProgressLine::~ProgressLine() {
  Zv_SetStatusCallBack(nullptr);
  if (shownPercent < 0) return;
  if (onTerminal)
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(currentLabel.size() + 8), "");
  else
    std::fprintf(stderr, " %%\n");
}

}  // namespace zv
