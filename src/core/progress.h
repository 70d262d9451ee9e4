// Progress reports of the long operations.
#pragma once

#include <zavo.h>

#include "core/settings.h"

namespace zavo {

// The part of an operation's progress that one of its stages stands for, in percent.
struct ProgressShare {
  int base = 0;     // where the stage begins
  int range = 100;  // how much it advances in all
};

// Counts `steps` of work as a percentage and calls the thread's status callback. The percentage advances by
// 100 / steps a step, the remainder is carried; with more than 100 steps the callback is called only when the
// percentage changes. Every call returns KSUCCESS to go on, or the callback's result, with which the operation ends.
class Progress {
 public:
  explicit Progress(int steps, ProgressShare share = {})
      : callback_(currentSettings().statusCallback),
        steps_(steps > 0 ? steps : 1),
        perStep_(share.range / steps_),
        remainderPerStep_(share.range % steps_),
        percent_(share.base) {}

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

// Takes the thread's status callback away while this lives.
class SilentProgress {
 public:
  SilentProgress() : settings_(currentSettings()), callback_(settings_.statusCallback) {
    settings_.statusCallback = nullptr;
  }
  SilentProgress(const SilentProgress&) = delete;
  SilentProgress& operator=(const SilentProgress&) = delete;
  ~SilentProgress() { settings_.statusCallback = callback_; }

 private:
  ThreadSettings& settings_;
  StatusCallback callback_;
};

}  // namespace zavo
