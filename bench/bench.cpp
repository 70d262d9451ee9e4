#include "bench.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <windows.h>

#include "peak_memory.h"

namespace bench {
namespace {

double now() {
  LARGE_INTEGER ticks, perSecond;
  QueryPerformanceCounter(&ticks);
  QueryPerformanceFrequency(&perSecond);
  return double(ticks.QuadPart) / double(perSecond.QuadPart);
}

struct Times {
  double best, median;  // seconds
};

using Work = std::function<void()>;

double timeOf(const Work& prepare, const Work& run, unsigned repeats) {
  if (!prepare) {
    const double start = now();
    for (unsigned i = 0; i < repeats; ++i) run();
    return (now() - start) / repeats;
  }
  double seconds = 0;
  for (unsigned i = 0; i < repeats; ++i) {
    prepare();
    const double start = now();
    run();
    seconds += now() - start;
  }
  return seconds / repeats;
}

// Short runs are repeated until they take 2 ms; then at least 7 such are timed, and more until 0.4 s are over.
Times measure(const Work& run, const Work& prepare = {}) {
  unsigned repeats = 1;
  while (timeOf(prepare, run, repeats) * repeats < 2e-3) repeats *= 2;
  std::vector<double> times;
  const double start = now();
  while (times.size() < 7 || (now() - start < 0.4 && times.size() < 200))
    times.push_back(timeOf(prepare, run, repeats));
  std::sort(times.begin(), times.end());
  return {times.front(), times[times.size() / 2]};
}

std::string formatted(const char* format, double value) {
  char text[64];
  snprintf(text, sizeof text, format, value);
  return text;
}

Who whoIs(const std::string& contender) {
  const bool system = contender.rfind("GDI", 0) == 0 || contender.rfind("WIC", 0) == 0;
  return system ? Who::system : contender == "memset" ? Who::memory : Who::library;
}

}  // namespace

bool Bench::wants(const std::string& operation, Size size) const {
  return takes(size) && operation.find(filter_) != std::string::npos;
}

// Between two blocks that were touched before, as results are written to memory that the caller has used.
double Bench::memcpyNanoseconds(size_t bytes) {
  for (const auto& [known, time] : memcpyTimes_) {
    if (known == bytes) return time;
  }
  std::vector<char> from(bytes, 1), to(bytes, 2);
  const double time = measure([&] { memcpy(to.data(), from.data(), bytes); }).best * 1e9;
  memcpyTimes_.emplace_back(bytes, time);
  return time;
}

void Bench::compare(const std::string& operation, Size size, size_t resultBytes,
                    const std::vector<Contender>& contenders) {
  if (!wants(operation, size)) return;
  const double copy = memcpyNanoseconds(resultBytes);
  print({operation, "memcpy of the result", Who::memory, size, copy / size.pixels(), copy / size.pixels(), 1, 0});
  for (const Contender& contender : contenders) {
    if (contender.prepare) contender.prepare();
    const size_t peak = peakGrowth(contender.run);
    const std::string fault = contender.verify();
    if (!fault.empty()) {
      printf("  %-52s wrong: %s\n", contender.name.c_str(), fault.c_str());
      // What the system gets wrong is left out; what the library does fails the run.
      if (whoIs(contender.name) == Who::library) allRight_ = false;
      continue;
    }
    const Times times = measure(contender.run, contender.prepare);
    print({operation, contender.name, whoIs(contender.name), size, times.best * 1e9 / size.pixels(),
           times.median * 1e9 / size.pixels(), times.best * 1e9 / copy, peak});
  }
}

void Bench::emptyCall(const std::string& name, const std::function<void()>& run) {
  if (!wants(name, {1, 1})) return;
  const Times times = measure([&] {
    for (int i = 0; i < 1000; ++i) run();
  });
  print({"empty call", name, Who::library, {1, 1}, times.best * 1e6, times.median * 1e6, 0, 0});
}

void Bench::print(const Result& result) {
  const std::string heading =
      result.operation + ", " + std::to_string(result.size.width) + " x " + std::to_string(result.size.height);
  if (heading != lastOperation_) {
    printf("\n%-54s %9s %10s %10s %8s\n", heading.c_str(), "x memcpy", "best ns/px", "median", "peak MB");
    lastOperation_ = heading;
  }
  printf("  %-52s %9s %10.3f %10.3f %8.1f\n", result.contender.c_str(),
         result.memcpyRatio > 0 ? formatted("%.2f", result.memcpyRatio).c_str() : "", result.best, result.median,
         double(result.peakBytes) / 1e6);
  fflush(stdout);
  results_.push_back(result);
}

}  // namespace bench
