// Watches the platform calls of zavo.dll: counts them, refuses chosen ones, and keeps a ledger of what was taken from
// the platform and not given back. The watch is on from the start of every test program, and a test that leaves more
// or less in the ledger than it found fails. What the test program itself takes and gives back is in the ledger too
// (an object may pass from one to the other); only the library's calls are counted and refused.
//
// The watched functions are listed in platform_watch.cpp, a line each.
#pragma once

#include <gtest/gtest.h>
#include <map>
#include <string>

namespace zavotest {

// Calls that zavo.dll made to one function since this was constructed.
class CallCount {
 public:
  explicit CallCount(const std::string& function);
  [[nodiscard]] unsigned get() const;

 private:
  const unsigned* calls_;
  unsigned before_ = 0;
};

enum class Repeat { once, fromThenOn };

// The name that stands for every function that takes something from the platform.
inline constexpr const char* anyResource = "";

// Makes the n-th call (1 is the next) of a function fail: it does nothing, sets ERROR_NOT_ENOUGH_MEMORY and returns
// what it documents for failure. One at a time.
class Refusal {
 public:
  Refusal(const std::string& function, unsigned n, Repeat repeat = Repeat::once);
  Refusal(const Refusal&) = delete;
  Refusal& operator=(const Refusal&) = delete;
  ~Refusal();

  // Name of the first function that was refused; null when the n-th call did not come.
  [[nodiscard]] const char* refused() const;
};

// What is taken and not given back: for each function that takes, how many.
using Outstanding = std::map<std::string, int>;
[[nodiscard]] Outstanding outstanding();

// What changed in the ledger since this was constructed.
class Ledger {
 public:
  Ledger() : before_(outstanding()) {}
  // Nothing did. The failure text names what was taken or given back by the function that takes it.
  [[nodiscard]] testing::AssertionResult balanced() const;

 private:
  Outstanding before_;
};

// Puts a function beneath the watch, called in the place of the platform's own, by the library and the test program
// alike. Returns what was there.
void* exchangeWatched(const std::string& function, void* replacement);

// Starts the watch, for the test program's main function.
void startPlatformWatch();

}  // namespace zavotest
