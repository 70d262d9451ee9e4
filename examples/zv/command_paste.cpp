// zv paste: writes the picture on the clipboard to a file.
#include "command.h"
#include "common/errors.h"
#include "common/wic.h"
#include "pipeline.h"

namespace zv {

namespace {

std::string help() {
  return stepHelp(everyFamily());
}

void runPaste(Arguments& arguments) {
  const std::string output = arguments.takeOperand("the file to write");
  const StepList steps = takeSteps(arguments, everyFamily(), "paste");
  outputFormat(output);
  if (Zv_ClipboardReady() == 0) throw Failure("there is no picture on the clipboard");
  Picture picture;
  if (Zv_CopyFromClipboard(nullptr, picture.handle()) == 0)
    throw Failure("cannot paste: another program holds the clipboard, or the picture is of an unknown kind");
  steps.apply(picture);
  writePicture(output, picture);
}

}  // namespace

const Command pasteCommand{"paste", "OUT [options]", "Writes the picture on the clipboard, which keeps its selection.",
                           help, runPaste};

}  // namespace zv
