#include "peak_memory.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

namespace bench {
namespace {

size_t workingSet() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.WorkingSetSize;
}

}  // namespace

size_t peakGrowth(const std::function<void()>& run) {
  std::atomic<bool> watching{false}, done{false};
  size_t peak = 0;
  std::thread watcher([&] {
    peak = workingSet();
    watching = true;
    while (!done) peak = std::max(peak, workingSet());
  });
  while (!watching) std::this_thread::yield();
  const size_t before = workingSet();
  run();
  peak = std::max(peak, workingSet());
  done = true;
  watcher.join();
  return std::max(peak, before) - before;
}

}  // namespace bench
