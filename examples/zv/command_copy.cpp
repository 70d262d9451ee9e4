// zv copy: places a picture on the clipboard, with its selection.
#include <windows.h>

#include "command.h"
#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"
#include "pipeline.h"

namespace zv {

namespace {

constexpr const char* holdOption = "--hold";

std::string help() {
  return format("  %-26s%s\n", "--hold SECONDS", "Stays so long, or until another program takes the clipboard.") +
         stepHelp(everyFamily());
}

/// The window that owns the clipboard; it is never shown.
class OwnerWindow {
 public:
  OwnerWindow() : window_(CreateWindowA("STATIC", "zv", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr)) {
    if (window_ == nullptr) throw Failure("cannot copy: " + windowsErrorText(GetLastError()));
  }
  OwnerWindow(const OwnerWindow&) = delete;
  OwnerWindow& operator=(const OwnerWindow&) = delete;
  ~OwnerWindow() { DestroyWindow(window_); }

  [[nodiscard]] HWND get() const { return window_; }
  [[nodiscard]] bool ownsClipboard() const { return GetClipboardOwner() == window_; }

 private:
  HWND window_;
};

/// Lets the system send its messages to the window meanwhile.
void hold(const OwnerWindow& window, int seconds) {
  constexpr DWORD lookEvery = 50;  // milliseconds
  const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(seconds) * 1000;
  while (GetTickCount64() < end && window.ownsClipboard()) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, lookEvery, QS_ALLINPUT);
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
  }
}

void runCopy(Arguments& arguments) {
  constexpr int day = 24 * 60 * 60;
  const std::string input = arguments.takeOperand("the picture");
  int seconds = 0;
  const StepList steps = takeSteps(arguments, everyFamily(), "copy", [&](const std::string& option) {
    if (option != holdOption) return false;
    seconds = parseNumber(option, arguments.takeValue(option), 0, day);
    return true;
  });
  PictureFile file = readPicture(input);
  steps.apply(file.picture);
  const OwnerWindow window;
  if (Zv_CopyToClipboard(window.get(), file.picture.handle()) == 0)
    throw Failure("cannot copy: another program holds the clipboard, or out of memory");
  hold(window, seconds);
}

}  // namespace

const Command copyCommand{"copy", "IN [options]", "Places a picture on the clipboard, with its selection.", help,
                          runCopy};

}  // namespace zv
