// Commands that read a picture, take it through the steps of the command line and write it.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "arguments.h"
#include "steps.h"

namespace zv {

using StepFamilies = std::span<const std::span<const StepOption>>;

/// All there are: selections, sizes, colours, turns.
StepFamilies everyFamily();

/// The options of the families, a line each.
std::string stepHelp(StepFamilies families);

/// Takes the options that follow, to the end of the command line. Those that are no steps are taken by `other`, which
/// says whether it knows them.
StepList takeSteps(Arguments& arguments, StepFamilies families, const std::string& command,
                   const std::function<bool(const std::string& option)>& other = nullptr);

/// The options of a family, a line each, without a word before them.
std::string optionHelp(std::span<const StepOption> family);

/// Runs "IN OUT [options]" for a command with these families of options.
void runSteps(Arguments& arguments, StepFamilies families, const std::string& command);

}  // namespace zv
