// The quarter wave that all angles are read from, computed by the compiler.
#include "geometry/sine_table.h"

#include <zavo.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace zavo {
namespace {

constexpr auto quarterWave = [] {
  std::array<int32_t, quarterTurn + 1> wave{};
  for (int i = 0; i <= quarterTurn; ++i) {
    // Never negative, so that truncating is rounding down.
    wave[static_cast<size_t>(i)] =
        static_cast<int32_t>(sineScale * __builtin_sin(i * std::numbers::pi / (2 * quarterTurn)) + 0.5);
  }
  return wave;
}();

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
