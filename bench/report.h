// What was measured, written for programs and for people.
#pragma once

#include <string>
#include <vector>

#include "bench.h"

namespace bench {

// Everything, as JSON. `commit` names what was built.
[[nodiscard]] std::string json(const std::vector<Result>& results, const std::string& commit);

// A table of the operations on the largest pictures, for a document: the library beside memcpy and beside the fastest
// of the system's ways.
[[nodiscard]] std::string markdown(const std::vector<Result>& results, const std::string& commit);

// Lines of operation, times memcpy of the library, times memcpy of the fastest of the system's ways; for the chart.
[[nodiscard]] std::string chartData(const std::vector<Result>& results);

}  // namespace bench
