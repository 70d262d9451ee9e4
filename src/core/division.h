// Division that rounds one way for all signs. The divisor is not 0.
#pragma once

#include <cstdint>

namespace zavo {

[[nodiscard]] constexpr int64_t dividedDown(int64_t value, int64_t divisor) {
  const int64_t quotient = value / divisor;
  return value % divisor != 0 && (value < 0) != (divisor < 0) ? quotient - 1 : quotient;
}

[[nodiscard]] constexpr int64_t dividedUp(int64_t value, int64_t divisor) {
  return -dividedDown(-value, divisor);
}

}  // namespace zavo
