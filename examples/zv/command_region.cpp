// zv region: selects parts of a picture, works on them and writes it.
#include "command.h"
#include "pipeline.h"

namespace zv {

namespace {

std::string help() {
  return stepHelp(everyFamily());
}

void runRegion(Arguments& arguments) {
  runSteps(arguments, everyFamily(), "region");
}

}  // namespace

const Command regionCommand{"region", "IN OUT [options]", "Selects parts of a picture and works on them.", help,
                            runRegion};

}  // namespace zv
