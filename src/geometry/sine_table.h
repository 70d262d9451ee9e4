// Sines and cosines in fixed point. Angles are in hundredths of a degree.
#pragma once

namespace zavo {

constexpr int fullTurn = 36000;
constexpr int quarterTurn = 9000;

// What a sine of 1 is scaled to.
constexpr int sineScale = 16384;

// Any angle brought into 0 .. fullTurn - 1.
[[nodiscard]] constexpr int normalizedAngle(int angle) {
  const int rest = angle % fullTurn;
  return rest < 0 ? rest + fullTurn : rest;
}

// floor(16384 * sin + 0.5) in the first quarter, mirrored into the others. Any angle.
[[nodiscard]] int sine(int angle);
[[nodiscard]] int cosine(int angle);

}  // namespace zavo
