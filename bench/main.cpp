// zavo_bench [FILTER] [--largest WIDTH] [--json FILE] [--report NAME] [--commit NAME]
// Times the library beside memcpy and what a Windows program would call instead, in one process.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <objbase.h>
#include <string>
#include <windows.h>

#include "bench.h"
#include "report.h"

namespace {

bool write(const std::string& name, const std::string& text) {
  std::ofstream file(name, std::ios::binary);
  file << text << std::flush;
  return file.good();
}

}  // namespace

int main(int count, char** arguments) {
  std::string filter, json, report, commit = "unknown";
  int largest = bench::largeSize.width;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    const bool hasValue = i + 1 < count;
    if (argument == "--largest" && hasValue) {
      largest = atoi(arguments[++i]);
    } else if (argument == "--json" && hasValue) {
      json = arguments[++i];
    } else if (argument == "--report" && hasValue) {
      report = arguments[++i];
    } else if (argument == "--commit" && hasValue) {
      commit = arguments[++i];
    } else if (argument.rfind("--", 0) == 0) {
      std::cout << "usage: zavo_bench [FILTER] [--largest WIDTH] [--json FILE] [--report NAME] [--commit NAME]\n";
      return 2;
    } else {
      filter = argument;
    }
  }
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  bench::Bench bench(filter, largest);
  bench::copying(bench);
  bench::conversion(bench);
  bench::dithering(bench);
  bench::colorReduction(bench);
  bench::processing(bench);
  bench::geometry(bench);
  bench::drawing(bench);
  bool written = json.empty() || write(json, bench::json(bench.results(), commit));
  if (!report.empty()) {
    written = write(report + ".md", bench::markdown(bench.results(), commit)) && written;
    written = write(report + ".dat", bench::chartData(bench.results())) && written;
  }
  return bench.allRight() && written ? 0 : 1;
}
