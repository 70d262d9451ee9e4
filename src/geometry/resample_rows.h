// Smooth scaling of bytes, sideways in a row and downwards between rows: averages when there are fewer destination
// items than source items, straight lines when there are as many or more. Every division rounds down.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zavo {

// Division of the sum of a number of bytes by that number, for many sums. With r = floor((2^32 - 1) / count), the high
// word of (sum + 1) * r is the quotient as long as 255 * count * count stays well below 2^32.
class ReciprocalAverage {
 public:
  using Sum = uint32_t;
  static constexpr unsigned largestCount = 4096;

  explicit ReciprocalAverage(unsigned count) : reciprocal_(UINT32_MAX / count) {}
  uint8_t operator()(Sum sum) const { return static_cast<uint8_t>(uint64_t{sum + 1} * reciprocal_ >> 32); }

 private:
  uint32_t reciprocal_;
};

// The same for any count.
class PlainAverage {
 public:
  using Sum = uint64_t;

  explicit PlainAverage(unsigned count) : count_(count) {}
  uint8_t operator()(Sum sum) const { return static_cast<uint8_t>(sum / count_); }

 private:
  unsigned count_;
};

// Copies of the first item that go before its span of `span` destination items, so that samples are centred.
[[nodiscard]] constexpr unsigned headStart(unsigned span, unsigned destinationCount, unsigned keptItems) {
  const unsigned copies = span / 2;
  if (copies + keptItems <= destinationCount) return copies;
  return destinationCount > keptItems ? destinationCount - keptItems : 0;
}

// Scales a row of pixels sideways.
using ResampleRowFunction = void (*)(uint8_t* destination, const uint8_t* source, unsigned destinationWidth,
                                     unsigned sourceWidth);
// For pixels of 1 or 3 bytes.
[[nodiscard]] ResampleRowFunction resampleRowFunction(unsigned channels, unsigned destinationWidth,
                                                      unsigned sourceWidth);

template <typename Sum>
void addRow(Sum* sums, const uint8_t* row, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) sums[i] += row[i];
}

template <typename Average>
void averageRows(uint8_t* destination, const typename Average::Sum* sums, size_t bytes, const Average& average) {
  for (size_t i = 0; i < bytes; ++i) destination[i] = average(sums[i]);
}

// The row `step` of `span` steps on the way from one row to another.
void blendRows(uint8_t* destination, const uint8_t* from, const uint8_t* to, size_t bytes, unsigned step,
               unsigned span);

}  // namespace zavo
