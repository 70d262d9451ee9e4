// Long operations: their progress in the status bar, and Esc to stop them.
#pragma once

#include <string>

#include "status_bar.h"

namespace zavoview {

/// While it lives, the library's reports of progress appear in the status bar, and Esc stops the operation.
class Busy {
 public:
  Busy(StatusBar& status, std::string work);
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;
  ~Busy();
};

}  // namespace zavoview
