// The commands of zv. A new one is a file of its own and a line in the table of main.cpp.
#pragma once

#include "arguments.h"

namespace zv {

struct Command {
  const char* name;
  const char* synopsis;   /// What follows the name: "IN OUT [options]".
  const char* summary;    /// A few words for the list of commands.
  std::string (*help)();  /// The options, line by line, each line ended; null for none.
  /// Throws Failure or UsageError when it cannot do its work.
  void (*run)(Arguments& arguments);
};

extern const Command infoCommand;
extern const Command convertCommand;
extern const Command regionCommand;
extern const Command playCommand;
extern const Command printCommand;
extern const Command copyCommand;
extern const Command pasteCommand;
extern const Command captureCommand;
extern const Command grayCommand;
extern const Command halftoneCommand;
extern const Command combineCommand;
extern const Command underlayCommand;
extern const Command alphaCommand;
extern const Command paintCommand;

}  // namespace zv
