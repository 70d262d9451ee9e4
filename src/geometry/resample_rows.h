// Smooth scaling of bytes, sideways in a row and downwards between rows: averages when there are fewer destination
// items than source items, straight lines when there are as many or more. Every division rounds down.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/memory.h"
#include "core/status.h"

namespace zavo {

// Copies of the first item that go before its span of `span` destination items, so that samples are centred;
// `keptItems` destination items are left at least.
[[nodiscard]] constexpr unsigned headStart(unsigned span, unsigned destinationCount, unsigned keptItems) {
  const unsigned copies = span / 2;
  if (destinationCount <= keptItems) return 0;
  return copies < destinationCount - keptItems ? copies : destinationCount - keptItems;
}

// Scales a row of pixels sideways.
using ResampleRowFunction = void (*)(uint8_t* destination, const uint8_t* source, unsigned destinationWidth,
                                     unsigned sourceWidth);
// For pixels of 1 or 3 bytes.
[[nodiscard]] ResampleRowFunction resampleRowFunction(unsigned channels, unsigned destinationWidth,
                                                      unsigned sourceWidth);

// The row `step` of `span` steps on the way from one row to another.
void blendRows(uint8_t* destination, const uint8_t* from, const uint8_t* to, size_t bytes, unsigned step,
               unsigned span);

// Sums of rows, byte by byte.
class RowSums {
 public:
  // For up to `mostRows` rows. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open(size_t bytes, unsigned mostRows);

  void clear();
  void add(const uint8_t* row);
  // The average of the `count` rows added.
  void average(uint8_t* destination, unsigned count) const;

 private:
  size_t bytes_ = 0;
  OsBlock<uint16_t> narrow_;  // while the sums fit
  OsBlock<uint64_t> wide_;    // else
};

}  // namespace zavo
