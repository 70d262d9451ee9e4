// The two ways a command ends early. main() turns them into one line on stderr and an exit code.
#pragma once

#include <stdexcept>

namespace zv {

/// The work could not be done: exit code 1.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The command line makes no sense: exit code 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace zv
