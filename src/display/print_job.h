// A page of a print job: a caller's, or one begun on the default printer.
#pragma once

#include <zavo.h>

namespace zavo {

// Who began the job, and so who may end it early.
enum class JobOwner { caller, library };

class [[nodiscard]] PrintJob {
 public:
  PrintJob(HDC dc, JobOwner owner) : dc_(dc), owner_(owner) {}

  // Begins a job on the default printer unless there is a device context. False when that fails.
  [[nodiscard]] bool open();

  [[nodiscard]] HDC dc() const { return dc_; }

  // Ends the page, the job and the device context if asked to. The device context's value, null when ending failed.
  [[nodiscard]] HDC finish(bool endJob);

  // Printing was stopped: a job of the library's own is aborted, a caller's ended if asked to.
  void cancel(bool endJob);

 private:
  HDC dc_;
  JobOwner owner_;
};

}  // namespace zavo
