// A status callback that notes the percentages it is given.
#pragma once

#include <zavo.h>

#include <vector>

namespace zavotest {

// Installs itself as this thread's status callback while it lives, and can stop the operation. One at a time.
class ProgressLog {
 public:
  // From call `stopAtCall` on (1 is the first) the callback returns `stopValue`; 0: never.
  explicit ProgressLog(size_t stopAtCall = 0, int stopValue = 0) : stopAtCall_(stopAtCall), stopValue_(stopValue) {
    current = this;
    previous_ = Zv_SetStatusCallBack(&note);
  }
  ProgressLog(const ProgressLog&) = delete;
  ProgressLog& operator=(const ProgressLog&) = delete;
  ~ProgressLog() { Zv_SetStatusCallBack(previous_); }

  std::vector<int> percents;

 private:
  static int ZAVO_CALL note(int percent) {
    current->percents.push_back(percent);
    const bool stop = current->stopAtCall_ != 0 && current->percents.size() >= current->stopAtCall_;
    return stop ? current->stopValue_ : KSUCCESS;
  }

  static inline thread_local ProgressLog* current = nullptr;
  size_t stopAtCall_;
  int stopValue_;
  StatusCallback previous_;
};

}  // namespace zavotest
