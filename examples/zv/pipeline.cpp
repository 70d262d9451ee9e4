#include "pipeline.h"

#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"

namespace zv {

namespace {

const StepOption& findOption(StepFamilies families, const std::string& name, const std::string& command) {
  for (const std::span<const StepOption> family : families)
    for (const StepOption& option : family)
      if (name == option.name) return option;
  throw UsageError("unknown option " + name + " (zv " + command + " --help lists them)");
}

}  // namespace

std::string optionHelp(std::span<const StepOption> family) {
  std::string help;
  for (const StepOption& option : family)
    help += format("  %-25s %s\n", (std::string(option.name) + " " + option.value).c_str(), option.help);
  return help;
}

StepFamilies everyFamily() {
  static const std::span<const StepOption> all[] = {selectOptions, sizeOptions, colorOptions, turnOptions};
  return all;
}

std::string stepHelp(StepFamilies families) {
  std::string help = "The options are applied in the order they stand:\n";
  for (const std::span<const StepOption> family : families) help += optionHelp(family);
  return help;
}

StepList takeSteps(Arguments& arguments, StepFamilies families, const std::string& command,
                   const std::function<bool(const std::string& option)>& other) {
  StepList steps;
  for (std::string name = arguments.takeOption(); !name.empty(); name = arguments.takeOption()) {
    if (other != nullptr && other(name)) continue;
    findOption(families, name, command).parse(steps, arguments, name);
  }
  arguments.finish();
  return steps;
}

void runSteps(Arguments& arguments, StepFamilies families, const std::string& command) {
  const std::string input = arguments.takeOperand("the picture to read");
  const std::string output = arguments.takeOperand("the file to write");
  const StepList steps = takeSteps(arguments, families, command);
  outputFormat(output);

  PictureFile file = readPicture(input);
  steps.apply(file.picture);
  writePicture(output, file.picture);
}

}  // namespace zv
