// Progress reports of the long operations, in the two ways of counting the system knows.
#pragma once

#include <zavo.h>

#include "core/settings.h"

namespace zavo {

// Counts `steps` of work as a percentage and calls the thread's status callback. The percentage advances by
// 100 / steps a step, the remainder is carried; with more than 100 steps the callback is called only when the
// percentage changes. Every call returns KSUCCESS to go on, or the callback's result, with which the operation ends.
class Progress {
 public:
  // `range` is the share of the whole that these steps stand for; `base` is where it begins.
  explicit Progress(int steps, int base = 0, int range = 100)
      : callback_(currentSettings().statusCallback),
        steps_(steps > 0 ? steps : 1),
        perStep_(range / steps_),
        remainderPerStep_(range % steps_),
        percent_(base) {}

  // Reports the starting percentage.
  [[nodiscard]] int begin() { return report(); }

  // One step is done.
  [[nodiscard]] int step() {
    percent_ += perStep_;
    remainder_ += remainderPerStep_;
    if (remainder_ >= steps_) {
      remainder_ -= steps_;
      ++percent_;
      return report();
    }
    return perStep_ != 0 ? report() : KSUCCESS;
  }

 private:
  [[nodiscard]] int report() const { return callback_ != nullptr ? callback_(percent_) : KSUCCESS; }

  StatusCallback callback_;
  int steps_;
  int perStep_;
  int remainderPerStep_;
  int percent_;
  int remainder_ = 0;
};

}  // namespace zavo
