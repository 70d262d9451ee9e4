// Commands of the Unix system beneath Wine, for what only another program can tell.
#pragma once

#include <string>

namespace zavotest {

struct ShellResult {
  int exitCode = -1;
  std::string output;  // of both streams
};

// Runs a command line of sh and waits for its end, at most a minute.
ShellResult shell(const std::string& commands);

}  // namespace zavotest
