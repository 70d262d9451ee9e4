// zv halftone: a picture in black and white dots.
#include "command.h"
#include "common/errors.h"
#include "common/wic.h"
#include "progress.h"

namespace zv {

namespace {

constexpr Choice screens[] = {{"clustered", HALFTONE_CLUSTERED}, {"dispersed", HALFTONE_DISPERSED}};
constexpr int fullCircle = 36000;  // hundredths of a degree

std::string help() {
  return "  --screen KIND   clustered: dots that grow, as in print; dispersed: dots far apart (clustered)\n"
         "  --angle DEGREES turns the screen clockwise, by up to two decimals of a degree\n";
}

void runHalftone(Arguments& arguments) {
  const std::string input = arguments.takeOperand("the picture to read");
  const std::string output = arguments.takeOperand("the file to write");
  int screen = HALFTONE_CLUSTERED;
  int angle = 0;
  for (std::string name = arguments.takeOption(); !name.empty(); name = arguments.takeOption()) {
    if (name == "--screen")
      screen = parseChoice(name, arguments.takeValue(name), screens);
    else if (name == "--angle")
      angle = parseHundredths(name, arguments.takeValue(name), -fullCircle, fullCircle);
    else
      throw UsageError("unknown option " + name + " (zv halftone --help lists them)");
  }
  arguments.finish();
  outputFormat(output);

  PictureFile file = readPicture(input);
  check(Zv_ChangeBitmapViewPerspective(nullptr, file.picture.handle(), VIEW_UPRIGHT), "turn upright");
  {
    const ProgressLine progress("halftone");
    check(Zv_HalfToneBitmapExt(file.picture.handle(), screen, angle), "make a halftone");
  }
  writePicture(output, file.picture);
}

}  // namespace

const Command halftoneCommand{"halftone", "IN OUT [options]", "Turns a picture into black and white dots.", help,
                              runHalftone};

}  // namespace zv
