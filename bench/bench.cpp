#include "bench.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <windows.h>

#include "peak_memory.h"
#include "text.h"

namespace bench {
namespace {

constexpr int contenderWidth = 52;  // characters

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

// The rest of a line of the table.
void printNumbers(const std::string& memcpyRatio, const std::string& best, const std::string& median,
                  const std::string& peak) {
  std::cout << std::right << ' ' << std::setw(9) << memcpyRatio << ' ' << std::setw(10) << best << ' ' << std::setw(10)
            << median << ' ' << std::setw(8) << peak << std::endl;
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
      std::cout << "  " << std::left << std::setw(contenderWidth) << contender.name << " wrong: " << fault << '\n';
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
    std::cout << '\n' << std::left << std::setw(contenderWidth + 2) << heading;
    printNumbers("x memcpy", "best ns/px", "median", "peak MB");
    lastOperation_ = heading;
  }
  std::cout << "  " << std::left << std::setw(contenderWidth) << result.contender;
  printNumbers(result.memcpyRatio > 0 ? fixed(2, result.memcpyRatio) : "", fixed(3, result.best),
               fixed(3, result.median), fixed(1, double(result.peakBytes) / 1e6));
  results_.push_back(result);
}

}  // namespace bench
