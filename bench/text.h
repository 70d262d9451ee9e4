// Numbers as text.
#pragma once

#include <iomanip>
#include <sstream>
#include <string>

namespace bench {

// With so many decimals.
[[nodiscard]] inline std::string fixed(int decimals, double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

}  // namespace bench
