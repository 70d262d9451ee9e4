// Grey runs: source and target are grey, so that the three channels go the same way and one is enough. All that can
// become of a value is in one table. In error diffusion a pixel can only be chosen when the errors of the pixels before
// it are known; what the rows above carry is known beforehand, so that little has to wait.
#include <algorithm>
#include <bit>

#include "color/dither_rows.h"

namespace zavo {
namespace {

constexpr int highest = GrayTable::lowest + GrayTable::entries - 1;

// The steps of the values `first` to `last`, 0 to 255, and of all that is clamped to them.
void setEntries(DitherRun& run, int first, int last, uint8_t index) {
  if (first == 0) first = GrayTable::lowest;
  if (last == 255) last = highest;
  const int level = run.target.palette[index].rgbGreen;
  for (int value = first; value <= last; ++value) {
    const int error = std::clamp(value, 0, 255) - level;
    run.grayTable.steps[value - GrayTable::lowest] = {
        .ahead = error * run.grayAhead, .error = static_cast<int16_t>(error), .index = index};
  }
}

// Fills in what shares the match key of a value, which is then clamped.
void fillGrayTable(DitherRun& run, int value) {
  const int level = std::clamp(value, 0, 255);
  const auto gray = static_cast<unsigned>(level);
  setEntries(run, level & ~7, level | 7, run.target.matcher.search(gray, gray, gray));
}

// (base + ahead) / divisor, rounded toward zero. `ahead` comes late: both candidates wait for it alone, and which one
// it is shall not be guessed, for it is as good as random.
template <int divisor>
int divideSum(int base, int ahead) {
  if constexpr (std::has_single_bit(unsigned{divisor})) {
    const int sum = base + ahead;
    const int raised = (base + (divisor - 1)) + ahead;
    return (__builtin_expect_with_probability(sum < 0, 1, 0.5) ? raised : sum) >> std::countr_zero(unsigned{divisor});
  } else {
    return (base + ahead) / divisor;
  }
}

template <int method>
void diffuseGray(DitherRun& run, uint8_t* indexes, const uint8_t* levels) {
  constexpr Kernel kernel = kernelOf<method>;
  const unsigned width = run.width;
  const auto* sums = static_cast<const Sum<method>*>(run.sums);
  const auto* steps = run.grayTable.steps - GrayTable::lowest;
  int16_t* errors = run.errors.rows[0];
  vectorSums<method, 1>(static_cast<Sum<method>*>(run.sums), run.errors, width);
  int ahead = 0;
  for (unsigned x = 0; x < width; ++x) {
    const int base = sums[x] + kernel.ahead[1] * errors[static_cast<ptrdiff_t>(x) - 2];
    const int carried = divideSum<kernel.divisor>(base, ahead);
    const auto* stepsHere = steps + levels[x];
    if (stepsHere[carried].error == GrayTable::unknown) [[unlikely]]
      fillGrayTable(run, levels[x] + carried);
    ahead = stepsHere[carried].ahead;
    errors[x] = stepsHere[carried].error;
    indexes[x] = stepsHere[carried].index;
  }
  run.errors.roll();
}

}  // namespace

void setGrayTable(DitherRun& run, int ahead) {
  run.grayAhead = ahead;
  if (run.target.kind == noFixedKind) {
    for (auto& step : run.grayTable.steps) step.error = GrayTable::unknown;
    return;
  }
  const BrightnessQuantiser quantise(run.target);
  for (int level = 0; level < 256; ++level) {
    setEntries(run, level, level, quantise(static_cast<uint32_t>(level) * 0x010101));
  }
}

void plainQuantiseGray(DitherRun& run, uint8_t* indexes, const uint8_t* levels) {
  const auto* steps = run.grayTable.steps - GrayTable::lowest;
  for (unsigned x = 0; x < run.width; ++x) {
    if (steps[levels[x]].error == GrayTable::unknown) [[unlikely]]
      fillGrayTable(run, levels[x]);
    indexes[x] = steps[levels[x]].index;
  }
}

DitherRowFunction grayDiffusion(int method) {
  static constexpr DitherRowFunction functions[] = {diffuseGray<1>, diffuseGray<2>, diffuseGray<3>,
                                                    diffuseGray<4>, diffuseGray<5>, diffuseGray<6>};
  return functions[method - 1];
}

}  // namespace zavo
