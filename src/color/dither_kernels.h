// The error-diffusion kernels of dithering methods 1 to 6, and the rows of errors they draw on.
//
// An error is a channel's value, after what was carried to it was added and the sum clamped, minus the chosen palette
// entry's channel. Errors are kept as they are and gathered where they are needed: what is carried to a pixel is the
// sum of weight * error over the pixels whose kernels reach it, divided once, toward zero.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace zavo {

constexpr int diffusionMethods = 6;

struct Kernel {
  int divisor;      // of the sum of weights * errors
  int rowsBelow;    // rows that errors reach
  int ahead[2];     // weights of x + 1 and x + 2 in the same row
  int below[3][7];  // weights of x - 3 .. x + 3 in the rows that follow
};

inline constexpr Kernel kernels[diffusionMethods] = {
    {16, 1, {7, 0}, {{0, 0, 3, 5, 1, 0, 0}}},
    {42, 2, {8, 4}, {{0, 2, 4, 8, 4, 2, 0}, {0, 1, 2, 4, 2, 1, 0}}},
    {32, 1, {8, 4}, {{0, 2, 4, 8, 4, 2, 0}}},
    {32, 2, {5, 3}, {{0, 2, 4, 5, 4, 2, 0}, {0, 0, 2, 3, 2, 0, 0}}},
    {200, 3, {0, 32}, {{12, 0, 26, 0, 30, 0, 16}, {0, 12, 0, 26, 0, 12, 0}, {5, 0, 12, 0, 12, 0, 5}}},
    {48, 2, {7, 5}, {{0, 3, 5, 7, 5, 3, 0}, {0, 1, 3, 5, 3, 1, 0}}},
};

template <int method>
inline constexpr Kernel kernelOf = kernels[method - 1];

// The largest sum: errors lie between -255 and 255, and the weights of a kernel add up to its divisor.
constexpr int largestSum(const Kernel& kernel) {
  return 255 * kernel.divisor;
}

// An undivided sum of a method.
template <int method>
using Sum = std::conditional_t<largestSum(kernelOf<method>) <= INT16_MAX, int16_t, int32_t>;

template <int method>
inline constexpr bool hasShortSums = sizeof(Sum<method>) == sizeof(int16_t);

// The error rows of a dither run, the current one first, then those above it. Samples of a pixel (4 lanes of a colour,
// or 1 of grey) lie side by side. Each row has margins of zeros that are never written, so that errors that would leave
// the row are dropped.
struct ErrorRows {
  static constexpr unsigned count = 4;   // the current row and as many as the tallest kernel reaches
  static constexpr unsigned margin = 3;  // pixels on either side

  int16_t* rows[count];  // the first pixel of each

  // The current row becomes the one above.
  void roll() {
    int16_t* oldest = rows[count - 1];
    for (unsigned i = count - 1; i > 0; --i) rows[i] = rows[i - 1];
    rows[0] = oldest;
  }
};

// What the rows above carry to a sample, undivided. `lanes` is the distance of neighbouring pixels' samples.
template <int method, int lanes>
int sumFromAbove(const ErrorRows& errors, size_t sample) {
  constexpr Kernel kernel = kernelOf<method>;
  int sum = 0;
  const auto add = [&]<size_t tap>() {
    constexpr int row = tap / 7, dx = static_cast<int>(tap % 7) - 3;
    // The pixel whose kernel reaches this one at distance dx lies at -dx.
    if constexpr (kernel.below[row][tap % 7] != 0) {
      sum += kernel.below[row][tap % 7] * errors.rows[row + 1][static_cast<ptrdiff_t>(sample) - dx * lanes];
    }
  };
  [&]<size_t... taps>(std::index_sequence<taps...>) {
    (add.template operator()<taps>(), ...);
  }
  (std::make_index_sequence<21>{});
  return sum;
}

}  // namespace zavo
