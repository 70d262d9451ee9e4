// Timing operations side by side: what is measured, how, and the table that comes of it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Size {
  int width, height;
  [[nodiscard]] double pixels() const { return double(width) * height; }
};

// Smaller than any cache, in the cache, larger than it.
inline constexpr Size tinySize = {64, 64};
inline constexpr Size cachedSize = {512, 512};
inline constexpr Size largeSize = {4096, 4096};
inline constexpr Size allSizes[] = {tinySize, cachedSize, largeSize};

// One way to get a result.
struct Contender {
  std::string name;
  std::function<void()> run;
  // Empty when the result of a run is right, else what is wrong with it. Asked before timing.
  std::function<std::string()> verify;
  // Done before every run, outside the time that is measured; may be empty.
  std::function<void()> prepare = {};
};

// Whose way it is.
enum class Who { memory, library, system };

struct Result {
  std::string operation;
  std::string contender;
  Who who;
  Size size;
  double best, median;  // nanoseconds a pixel
  double memcpyRatio;   // best against the best memcpy of the result's bytes
  size_t peakBytes;     // taken by a run beyond what was there before
};

class Bench {
 public:
  // `filter`: only operations whose name contains it are run. `largest` leaves out the larger sizes.
  Bench(std::string filter, int largest) : filter_(std::move(filter)), largest_(largest) {}

  // Whether a size, or an operation, will be run at all: pictures need not be made for nothing.
  [[nodiscard]] bool takes(Size size) const { return size.width <= largest_; }
  [[nodiscard]] bool wants(const std::string& operation, Size size) const;

  // Verifies and times the contenders, the library's first, and prints a row for each. `resultBytes` is what memcpy is
  // given.
  void compare(const std::string& operation, Size size, size_t resultBytes, const std::vector<Contender>& contenders);

  // A call that does next to nothing, in nanoseconds.
  void emptyCall(const std::string& name, const std::function<void()>& run);

  [[nodiscard]] bool allRight() const { return allRight_; }
  [[nodiscard]] const std::vector<Result>& results() const { return results_; }

 private:
  double memcpyNanoseconds(size_t bytes);
  void print(const Result& result);

  std::string filter_;
  int largest_;
  bool allRight_ = true;
  std::string lastOperation_;
  std::vector<std::pair<size_t, double>> memcpyTimes_;
  std::vector<Result> results_;
};

// --- The scenarios, a file each
void copying(Bench& bench);
void conversion(Bench& bench);
void dithering(Bench& bench);
void colorReduction(Bench& bench);
void processing(Bench& bench);
void geometry(Bench& bench);
void drawing(Bench& bench);

}  // namespace bench
