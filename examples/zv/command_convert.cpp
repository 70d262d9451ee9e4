// zv convert: reads a picture, changes its form, writes it.
#include "command.h"
#include "pipeline.h"

namespace zv {

namespace {

StepFamilies families() {
  static const std::span<const StepOption> all[] = {sizeOptions, colorOptions, turnOptions};
  return all;
}

std::string help() {
  return stepHelp(families());
}

void runConvert(Arguments& arguments) {
  runSteps(arguments, families(), "convert");
}

}  // namespace

const Command convertCommand{"convert", "IN OUT [options]", "Reads a picture, works on it and writes it.", help,
                             runConvert};

}  // namespace zv
