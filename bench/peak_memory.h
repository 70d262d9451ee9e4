// How much memory a run takes beyond what the program had before.
#pragma once

#include <cstddef>
#include <functional>

namespace bench {

// The largest growth of the working set, in bytes, as a second thread sees it during a run: pages that were not touched
// do not count, and growth of less than a millisecond may be missed.
[[nodiscard]] size_t peakGrowth(const std::function<void()>& run);

}  // namespace bench
