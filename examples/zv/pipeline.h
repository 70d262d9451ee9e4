// Commands that read a picture, take it through the steps of the command line and write it.
#pragma once

#include <span>
#include <string>

#include "arguments.h"
#include "steps.h"

namespace zv {

using StepFamilies = std::span<const std::span<const StepOption>>;

/// The options of the families, a line each.
std::string stepHelp(StepFamilies families);

/// Runs "IN OUT [options]" for a command with these families of options.
void runSteps(Arguments& arguments, StepFamilies families, const std::string& command);

}  // namespace zv
