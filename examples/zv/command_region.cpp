// zv region: selects parts of a picture, works on them and writes it.
#include "command.h"
#include "pipeline.h"

namespace zv {

namespace {

StepFamilies families() {
  static const std::span<const StepOption> all[] = {selectOptions, sizeOptions, colorOptions, turnOptions};
  return all;
}

std::string help() {
  return stepHelp(families());
}

void runRegion(Arguments& arguments) {
  runSteps(arguments, families(), "region");
}

}  // namespace

const Command regionCommand{"region", "IN OUT [options]", "Selects parts of a picture and works on them.", help,
                            runRegion};

}  // namespace zv
