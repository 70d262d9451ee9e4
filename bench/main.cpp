// zavo_bench [FILTER] [--largest WIDTH] [--json FILE] [--commit NAME]
// Times the library beside memcpy and what a Windows program would call instead, in one process.
#include <cstdio>
#include <cstdlib>
#include <objbase.h>
#include <string>
#include <windows.h>

#include "bench.h"

int main(int count, char** arguments) {
  std::string filter, file, commit = "unknown";
  int largest = bench::largeSize.width;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    const bool hasValue = i + 1 < count;
    if (argument == "--largest" && hasValue) {
      largest = atoi(arguments[++i]);
    } else if (argument == "--json" && hasValue) {
      file = arguments[++i];
    } else if (argument == "--commit" && hasValue) {
      commit = arguments[++i];
    } else if (argument.rfind("--", 0) == 0) {
      printf("usage: zavo_bench [FILTER] [--largest WIDTH] [--json FILE] [--commit NAME]\n");
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
  if (!file.empty()) {
    if (FILE* json = fopen(file.c_str(), "w"); json != nullptr) {
      fputs(bench.json(commit).c_str(), json);
      fclose(json);
    }
  }
  return bench.allRight() ? 0 : 1;
}
