// The quarter wave that all angles are read from, computed by the compiler.
#include "geometry/sine_table.h"

#include <zavo.h>

#include <array>
#include <cstdint>
#include <numbers>

namespace zavo {
namespace {

// The sine of 0 to a quarter of a turn, in radians, by its power series.
consteval double sineOf(double angle) {
  double sum = 0;
  double term = angle;
  for (int k = 1; k < 30; k += 2) {
    sum += term;
    term *= -angle * angle / ((k + 1) * (k + 2));
  }
  return sum;
}

consteval auto makeQuarterWave() {
  std::array<int32_t, quarterTurn + 1> wave{};
  for (int i = 0; i <= quarterTurn; ++i) {
    const double doubled = 2 * sineScale * sineOf(i * std::numbers::pi / (2 * quarterTurn));
    wave[static_cast<size_t>(i)] = (static_cast<int32_t>(doubled) + 1) / 2;  // rounded, and never negative
  }
  return wave;
}

constexpr auto quarterWave = makeQuarterWave();

int quarterWaveAt(int index) {
  return quarterWave[static_cast<size_t>(index)];
}

}  // namespace

int sine(int angle) {
  const int a = normalizedAngle(angle);
  if (a <= quarterTurn) return quarterWaveAt(a);
  if (a <= 2 * quarterTurn) return quarterWaveAt(2 * quarterTurn - a);
  if (a <= 3 * quarterTurn) return -quarterWaveAt(a - 2 * quarterTurn);
  return -quarterWaveAt(fullTurn - a);
}

int cosine(int angle) {
  return sine(normalizedAngle(angle) + quarterTurn);
}

}  // namespace zavo

int ZAVO_CALL Zv_SinValue(int angle) {
  return zavo::sine(angle);
}
