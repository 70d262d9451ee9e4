// zv capture: writes what stands on the screen.
#include <algorithm>
#include <cstdint>
#include <windows.h>

#include "command.h"
#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"

namespace zv {

namespace {

std::string help() {
  return format("  %-26s%s\n", "--rect X,Y,W,H", "A part of the screen; else all of it.");
}

/// The screen's device context.
class Screen {
 public:
  Screen() : dc_(GetDC(nullptr)) {
    if (dc_ == nullptr) throw Failure("cannot capture: there is no screen");
  }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen() { ReleaseDC(nullptr, dc_); }

  [[nodiscard]] HDC get() const { return dc_; }

 private:
  HDC dc_;
};

LONG endOf(int begin, int length) {
  return static_cast<LONG>(std::clamp(int64_t{begin} + length, int64_t{INT32_MIN}, int64_t{INT32_MAX}));
}

RECT takeRect(Arguments& arguments) {
  RECT rect = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
  for (std::string name = arguments.takeOption(); !name.empty(); name = arguments.takeOption()) {
    if (name != "--rect") throw UsageError("unknown option " + name + " (zv capture --help lists them)");
    const std::string text = arguments.takeValue(name);
    const std::vector<int> numbers = parseNumbers(name, text, 4);
    const RECT wanted = {numbers[0], numbers[1], endOf(numbers[0], numbers[2]), endOf(numbers[1], numbers[3])};
    if (numbers.size() > 4 || !IntersectRect(&rect, &rect, &wanted))
      throw UsageError(format("%s takes a part of the screen (X,Y,W,H), not '%s'", name.c_str(), text.c_str()));
  }
  return rect;
}

void runCapture(Arguments& arguments) {
  const std::string output = arguments.takeOperand("the file to write");
  const RECT rect = takeRect(arguments);
  arguments.finish();
  outputFormat(output);
  Picture picture;
  check(Zv_ScreenCaptureBitmap(Screen().get(), picture.handle(), &rect), "capture");
  writePicture(output, picture);
}

}  // namespace

const Command captureCommand{"capture", "OUT [options]", "Writes what stands on the screen.", help, runCapture};

}  // namespace zv
