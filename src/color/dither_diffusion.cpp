// Error diffusion, pixel by pixel. A pixel can only be chosen when the errors of the pixels before it are known; what
// the rows above carry is known beforehand, so that little has to wait.
#include <algorithm>
#include <bit>

#include "color/dither_rows.h"

namespace zavo {
namespace {

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

template <int method, typename Quantiser>
void diffuseColors(DitherRun& run, uint8_t* indexes, const uint8_t* pixels) {
  constexpr Kernel kernel = kernelOf<method>;
  const Quantiser quantise(run.target);
  int16_t* errors = run.errors.rows[0];
  for (unsigned x = 0; x < run.width; ++x) {
    uint32_t color = 0;
    int values[3];
    for (unsigned channel = 0; channel < 3; ++channel) {
      const ptrdiff_t sample = static_cast<ptrdiff_t>(x) * 4 + channel;
      const int sum = sumFromAbove<method, 4>(run.errors, static_cast<size_t>(sample)) +
                      kernel.ahead[0] * errors[sample - 4] + kernel.ahead[1] * errors[sample - 8];
      values[channel] = std::clamp(pixels[sample] + sum / kernel.divisor, 0, 255);
      color |= static_cast<uint32_t>(values[channel]) << 8 * channel;
    }
    const uint8_t index = quantise(color);
    for (unsigned channel = 0; channel < 3; ++channel) {
      errors[size_t{x} * 4 + channel] = static_cast<int16_t>(values[channel] - run.target.lanes[index][channel]);
    }
    indexes[x] = index;
  }
  run.errors.roll();
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

template <typename Quantiser>
constexpr DitherRowFunction colorFunctions[] = {diffuseColors<1, Quantiser>, diffuseColors<2, Quantiser>,
                                                diffuseColors<3, Quantiser>, diffuseColors<4, Quantiser>,
                                                diffuseColors<5, Quantiser>, diffuseColors<6, Quantiser>};

}  // namespace

DitherRowFunction plainDiffusion(int method, int kind) {
  return chooseByQuantiser(kind, [&]<typename Quantiser>() { return colorFunctions<Quantiser>[method - 1]; });
}

DitherRowFunction grayDiffusion(int method) {
  static constexpr DitherRowFunction functions[] = {diffuseGray<1>, diffuseGray<2>, diffuseGray<3>,
                                                    diffuseGray<4>, diffuseGray<5>, diffuseGray<6>};
  return functions[method - 1];
}

}  // namespace zavo
