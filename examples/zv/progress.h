// The progress line on stderr, fed by the library's status callback.
#pragma once

#include <string>

namespace zv {

/// Progress is shown when stderr is a terminal, or when the user asks for it.
void enableProgress(bool always);

/// While it lives, the library's reports appear as a line with this label.
class ProgressLine {
 public:
  explicit ProgressLine(std::string label);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
};

}  // namespace zv
