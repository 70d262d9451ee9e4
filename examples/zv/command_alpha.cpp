// zv alpha: the alpha of a picture as a picture, and the other way round.
#include "alpha.h"
#include "command.h"
#include "common/errors.h"
#include "common/wic.h"

namespace zv {

void setAlpha(Picture& picture, const std::string& file) {
  PictureFile alpha = readPicture(file);
  check(Zv_ColorResBitmap(picture.handle(), nullptr, 32, COLORRES_BLUE_FIRST, nullptr, 0), "make room for an alpha");
  check(Zv_SetBitmapAlpha(picture.handle(), alpha.picture.handle()),
        "set the alpha (is " + file + " of another size?)");
}

namespace {

std::string help() {
  return "  --set FILE      writes IN with the brightness of a picture as its alpha, as a PNG file\n";
}

void runAlpha(Arguments& arguments) {
  const std::string input = arguments.takeOperand("the picture to read");
  const std::string output = arguments.takeOperand("the file to write");
  std::string alphaFile;
  for (std::string name = arguments.takeOption(); !name.empty(); name = arguments.takeOption()) {
    if (name != "--set") throw UsageError("unknown option " + name + " (zv alpha --help lists them)");
    alphaFile = arguments.takeValue(name);
  }
  arguments.finish();
  outputFormat(output);

  PictureFile file = readPicture(input);
  if (!alphaFile.empty()) {
    setAlpha(file.picture, alphaFile);
    writePictureWithAlpha(output, file.picture);
    return;
  }
  Picture alpha;
  check(Zv_GetBitmapAlpha(file.picture.handle(), alpha.handle()), "take the alpha");
  writePicture(output, alpha);
}

}  // namespace

const Command alphaCommand{"alpha", "IN OUT [--set FILE]", "Writes the alpha of a picture, or gives it one.", help,
                           runAlpha};

}  // namespace zv
