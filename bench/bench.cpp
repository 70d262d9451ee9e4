#include "bench.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <windows.h>

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

double timeOf(const std::function<void()>& run, unsigned repeats) {
  const double start = now();
  for (unsigned i = 0; i < repeats; ++i) run();
  return (now() - start) / repeats;
}

// Short runs are repeated until they take 2 ms; then at least 7 such are timed, and more until 0.4 s are over.
Times measure(const std::function<void()>& run) {
  unsigned repeats = 1;
  while (timeOf(run, repeats) * repeats < 2e-3) repeats *= 2;
  std::vector<double> times;
  const double start = now();
  while (times.size() < 7 || (now() - start < 0.4 && times.size() < 200)) times.push_back(timeOf(run, repeats));
  std::sort(times.begin(), times.end());
  return {times.front(), times[times.size() / 2]};
}

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

std::string formatted(const char* format, double value) {
  char text[64];
  snprintf(text, sizeof text, format, value);
  return text;
}

std::string processor() {
  char name[128] = "";
  DWORD bytes = sizeof name;
  RegGetValueA(HKEY_LOCAL_MACHINE, "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", "ProcessorNameString",
               RRF_RT_REG_SZ, nullptr, name, &bytes);
  return name;
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
  print({operation, "memcpy of the result", size, copy / size.pixels(), copy / size.pixels(), 1});
  for (const Contender& contender : contenders) {
    contender.run();
    const std::string fault = contender.verify();
    if (!fault.empty()) {
      printf("  %-52s wrong: %s\n", contender.name.c_str(), fault.c_str());
      allRight_ = false;
      continue;
    }
    const Times times = measure(contender.run);
    print({operation, contender.name, size, times.best * 1e9 / size.pixels(), times.median * 1e9 / size.pixels(),
           times.best * 1e9 / copy});
  }
}

void Bench::emptyCall(const std::string& name, const std::function<void()>& run) {
  if (!wants(name, {1, 1})) return;
  const Times times = measure([&] {
    for (int i = 0; i < 1000; ++i) run();
  });
  print({"empty call", name, {1, 1}, times.best * 1e6, times.median * 1e6, 0});
}

void Bench::print(const Result& result) {
  const std::string heading =
      result.operation + ", " + std::to_string(result.size.width) + " x " + std::to_string(result.size.height);
  if (heading != lastOperation_) {
    printf("\n%-54s %9s %10s %10s\n", heading.c_str(), "x memcpy", "best ns/px", "median");
    lastOperation_ = heading;
  }
  printf("  %-52s %9s %10.3f %10.3f\n", result.contender.c_str(),
         result.memcpyRatio > 0 ? formatted("%.2f", result.memcpyRatio).c_str() : "", result.best, result.median);
  fflush(stdout);
  results_.push_back(result);
}

std::string Bench::json(const std::string& commit) const {
  std::string text = "{\n  \"processor\": " + quoted(processor()) + ",\n  \"compiler\": " + quoted("GCC " __VERSION__) +
                     ",\n  \"commit\": " + quoted(commit) + ",\n  \"results\": [\n";
  for (size_t i = 0; i < results_.size(); ++i) {
    const Result& r = results_[i];
    text += "    {\"operation\": " + quoted(r.operation) + ", \"width\": " + std::to_string(r.size.width) +
            ", \"height\": " + std::to_string(r.size.height) + ", \"contender\": " + quoted(r.contender) +
            formatted(", \"bestNsPerPixel\": %.4f", r.best) + formatted(", \"medianNsPerPixel\": %.4f", r.median) +
            formatted(", \"timesMemcpy\": %.3f}", r.memcpyRatio) + (i + 1 < results_.size() ? ",\n" : "\n");
  }
  return text + "  ]\n}\n";
}

}  // namespace bench
