// zv print: prints a picture on the default printer.
#include <cstdio>
#include <windows.h>
// This needs windows.h first.
#include <winspool.h>

#include "command.h"
#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"
#include "progress.h"

namespace zv {

namespace {

struct Placement {
  int x = 0, y = 0, width = 0, height = 0;
  bool fast = false;
};

struct NumberOption {
  const char* name;
  const char* help;
  int Placement::*value;
  int lowest;
};

// Farther off than any page reaches, and no arithmetic on it overflows.
constexpr int farthest = 1000000;

const NumberOption numberOptions[] = {
    {"--x", "Left edge in printer pixels; without it the picture is centred.", &Placement::x, -farthest},
    {"--y", "Top edge in printer pixels; without it the picture is centred.", &Placement::y, -farthest},
    {"--width", "Width in printer pixels; without it, it follows from the height.", &Placement::width, 1},
    {"--height", "Height in printer pixels; without both the picture fills the page.", &Placement::height, 1},
};

std::string help() {
  std::string text;
  for (const NumberOption& option : numberOptions)
    text += format("  %-26s%s\n", (option.name + std::string(" N")).c_str(), option.help);
  return text +
         format("  %-26s%s\n", "--fast", "The printer's driver scales the picture; --width and --height are needed.");
}

const NumberOption& findOption(const std::string& name) {
  for (const NumberOption& option : numberOptions)
    if (name == option.name) return option;
  throw UsageError("unknown option " + name + " (zv print --help lists them)");
}

Placement takePlacement(Arguments& arguments) {
  Placement place;
  for (std::string name = arguments.takeOption(); !name.empty(); name = arguments.takeOption()) {
    if (name == "--fast") {
      place.fast = true;
      continue;
    }
    const NumberOption& option = findOption(name);
    place.*option.value = parseNumber(name, arguments.takeValue(name), option.lowest, farthest);
  }
  if (place.fast && (place.width == 0 || place.height == 0)) throw UsageError("--fast needs --width and --height");
  return place;
}

/// Asks the print system, which thereby makes its default printer known where the library looks for it.
bool hasDefaultPrinter() {
  DWORD length = 0;
  GetDefaultPrinterA(nullptr, &length);
  return length > 0;
}

void runPrint(Arguments& arguments) {
  const std::string input = arguments.takeOperand("the picture");
  const Placement place = takePlacement(arguments);
  arguments.finish();
  PictureFile file = readPicture(input);
  if (!hasDefaultPrinter()) throw Failure("cannot print: there is no default printer");
  const ProgressLine progress("print");
  const auto print = place.fast ? Zv_PrintBitmapFast : Zv_PrintBitmapExt;
  if (print(nullptr, file.picture.handle(), place.x, place.y, place.width, place.height, 1) == nullptr)
    throw Failure("cannot print: the printer does not take the job, or it was stopped");
}

}  // namespace

const Command printCommand{"print", "IN [options]", "Prints a picture on the default printer.", help, runPrint};

}  // namespace zv
