#include "report.h"

#include <windows.h>

#include "text.h"

namespace bench {
namespace {

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

std::string processor() {
  char name[128] = "";
  DWORD bytes = sizeof name;
  RegGetValueA(HKEY_LOCAL_MACHINE, R"(HARDWARE\DESCRIPTION\System\CentralProcessor\0)", "ProcessorNameString",
               RRF_RT_REG_SZ, nullptr, name, &bytes);
  return name;
}

// An operation on the largest pictures.
struct Row {
  const Result* library;
  const Result* system;  // the fastest, null for none
};

std::vector<Row> rowsOf(const std::vector<Result>& results) {
  std::vector<Row> rows;
  for (const Result& result : results) {
    if (result.size.width != largeSize.width || result.who == Who::memory) continue;
    if (rows.empty() || rows.back().library->operation != result.operation) {
      rows.push_back({&result, nullptr});
    } else if (result.who == Who::system) {
      const Result*& fastest = rows.back().system;
      if (fastest == nullptr || result.best < fastest->best) fastest = &result;
    }
  }
  return rows;
}

}  // namespace

std::string json(const std::vector<Result>& results, const std::string& commit) {
  std::string text = "{\n  \"processor\": " + quoted(processor()) + ",\n  \"compiler\": " + quoted("GCC " __VERSION__) +
                     ",\n  \"commit\": " + quoted(commit) + ",\n  \"results\": [\n";
  for (size_t i = 0; i < results.size(); ++i) {
    const Result& r = results[i];
    text += "    {\"operation\": " + quoted(r.operation) + ", \"width\": " + std::to_string(r.size.width) +
            ", \"height\": " + std::to_string(r.size.height) + ", \"contender\": " + quoted(r.contender) +
            ", \"bestNsPerPixel\": " + fixed(4, r.best) + ", \"medianNsPerPixel\": " + fixed(4, r.median) +
            ", \"timesMemcpy\": " + fixed(3, r.memcpyRatio) + ", \"peakBytes\": " + std::to_string(r.peakBytes) + "}" +
            (i + 1 < results.size() ? ",\n" : "\n");
  }
  return text + "  ]\n}\n";
}

std::string markdown(const std::vector<Result>& results, const std::string& commit) {
  std::string text = "# Benchmarks\n\nMeasured by `script/bench --report` on pictures of " +
                     std::to_string(largeSize.width) + " x " + std::to_string(largeSize.height) + " pixels, commit " +
                     commit + ", " + processor() + ", GCC " __VERSION__ +
                     ", in one process and one run. *x memcpy* is the time beside that of copying as many bytes as the "
                     "result has; *peak* what a run takes beyond what was there before; the last columns are the "
                     "fastest of what Windows (here: Wine) offers for the job. Operations that make or replace a "
                     "picture take its fresh memory within the time, which the system's ways here are given "
                     "beforehand: on this machine, touching 50 MB of a fresh section takes longer than filling "
                     "it.\n\n![The same as a chart]"
                     "(images/benchmarks.svg)\n\n| operation | ns a pixel | x memcpy | peak MB | the system's way | "
                     "ns a pixel | times ours |\n|---|--:|--:|--:|---|--:|--:|\n";
  for (const Row& row : rowsOf(results)) {
    text += "| " + row.library->operation + " | " + fixed(3, row.library->best) + " | " +
            fixed(2, row.library->memcpyRatio) + " | " + fixed(0, double(row.library->peakBytes) / 1e6) + " | ";
    if (row.system != nullptr) {
      text += row.system->contender + " | " + fixed(3, row.system->best) + " | " +
              fixed(1, row.system->best / row.library->best) + " |\n";
    } else {
      text += "| | |\n";
    }
  }
  return text;
}

std::string chartData(const std::vector<Result>& results) {
  std::string text;
  for (const Row& row : rowsOf(results)) {
    text += quoted(row.library->operation) + "\t" + fixed(4, row.library->memcpyRatio) + "\t" +
            (row.system != nullptr ? fixed(4, row.system->memcpyRatio) : "NaN") + "\n";
  }
  return text;
}

}  // namespace bench
