// An operation run with its 1st, 2nd, 3rd ... platform resource refused, until it succeeds untouched.
#pragma once

#include <zavo.h>

#include <functional>
#include <initializer_list>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "support/platform_watch.h"
#include "support/snapshot.h"

namespace zavotest {

struct RefusalRules {
  // What the operation may return when a resource is refused.
  std::vector<int> codes = {KERR_NO_MEMORY};
  // Functions whose refusal the operation may survive, because it does without or takes another way.
  std::vector<std::string> survived = {};
  // The operation is to meet at least so many refusals: a loop that refuses nothing proves nothing.
  unsigned leastPoints = 1;
};

// One round of the loop: the round's own part of the test makes its arguments, names what must not change, and runs
// the operation once.
class RefusalRound {
 public:
  RefusalRound(const RefusalRules& rules, unsigned n, Repeat repeat) : rules_(rules), n_(n), repeat_(repeat) {}

  // When the operation fails, this bitmap must be unchanged.
  void keeps(BitmapHandle& bitmap) { kept_.emplace_back(bitmap); }

  // Runs the operation with the round's refusal in force; checks its result and what it left. A positive result is
  // success. Returns that result.
  int run(const std::function<int()>& operation);

  // The function that was refused; null when the operation had all it asked for.
  [[nodiscard]] const char* refused() const { return refused_; }

 private:
  const RefusalRules& rules_;
  unsigned n_;
  Repeat repeat_;
  const char* refused_ = nullptr;
  std::list<Snapshot> kept_;
};

// Runs rounds that refuse the n-th resource only and then, from the first on again, the n-th and all after it.
//   refuseEachResource({}, [](RefusalRound& round) {
//     TestBitmap bitmap(37, 11, 8);
//     round.keeps(bitmap);
//     round.run([&] { return Zv_SizeBitmap(&bitmap, 10, 10, 0); });
//   });
// A round must end with what it began with in the ledger.
void refuseEachResource(const RefusalRules& rules, const std::function<void(RefusalRound&)>& round);

}  // namespace zavotest
