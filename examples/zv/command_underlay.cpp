// zv underlay: another picture shown under a picture, around its selection and through its alpha.
#include "alpha.h"
#include "command.h"
#include "common/wic.h"
#include "pipeline.h"
#include "progress.h"

namespace zv {

namespace {

std::string help() {
  return "  --stretch                 stretches OTHER to the size of IN; otherwise it is repeated\n"
         "  --alpha FILE              takes the brightness of a picture as the alpha of IN\n"
         "With a selection, OTHER is shown outside it:\n" +
         optionHelp(selectOptions);
}

void runUnderlay(Arguments& arguments) {
  static const std::span<const StepOption> families[] = {selectOptions};
  const std::string input = arguments.takeOperand("the picture to read");
  const std::string other = arguments.takeOperand("the other picture");
  const std::string output = arguments.takeOperand("the file to write");
  unsigned flags = UNDERLAY_TILE;
  std::string alphaFile;
  const StepList selections = takeSteps(arguments, families, "underlay", [&](const std::string& option) {
    if (option == "--stretch")
      flags = UNDERLAY_STRETCH;
    else if (option == "--alpha")
      alphaFile = arguments.takeValue(option);
    else
      return false;
    return true;
  });
  outputFormat(output);

  PictureFile over = readPicture(input);
  PictureFile under = readPicture(other);
  if (!alphaFile.empty()) setAlpha(over.picture, alphaFile);
  selections.apply(over.picture);
  {
    const ProgressLine progress("underlay");
    check(Zv_UnderlayBitmap(over.picture.handle(), under.picture.handle(), flags), "underlay");
  }
  writePicture(output, over.picture);
}

}  // namespace

const Command underlayCommand{"underlay", "IN OTHER OUT [options]", "Shows another picture under a picture.", help,
                              runUnderlay};

}  // namespace zv
