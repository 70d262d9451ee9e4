// zv gray: a picture in 256 greys.
#include "command.h"
#include "common/wic.h"
#include "progress.h"

namespace zv {

namespace {

void runGray(Arguments& arguments) {
  const std::string input = arguments.takeOperand("the picture to read");
  const std::string output = arguments.takeOperand("the file to write");
  arguments.finish();
  outputFormat(output);

  PictureFile file = readPicture(input);
  {
    const ProgressLine progress("grey");
    check(Zv_GrayScaleBitmap(file.picture.handle()), "turn grey");
  }
  writePicture(output, file.picture);
}

}  // namespace

const Command grayCommand{"gray", "IN OUT", "Turns a picture into 256 greys.", nullptr, runGray};

}  // namespace zv
