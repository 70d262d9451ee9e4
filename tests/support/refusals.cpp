// The loop over the resources of an operation.
#include "support/refusals.h"

#include <algorithm>
#include <cstdio>

namespace zavotest {
namespace {

// Far more than any operation of the library takes; a loop that gets here does not come to an end.
constexpr unsigned mostPoints = 2000;

template <typename T>
bool contains(const std::vector<T>& items, const T& item) {
  return std::find(items.begin(), items.end(), item) != items.end();
}

// Of the running test so far.
int failures() {
  return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

}  // namespace

int RefusalRound::run(const std::function<int()>& operation) {
  const Ledger ledger;
  int status = 0;
  {
    const Refusal refusal(anyResource, n_, repeat_);
    status = operation();
    refused_ = refusal.refused();
  }
  if (status > 0) {
    const bool mayBe = refused_ == nullptr || contains<std::string>(rules_.survived, refused_);
    EXPECT_TRUE(mayBe) << "succeeded though " << refused_ << " was refused";
    return status;
  }
  EXPECT_NE(refused_, nullptr) << "failed with " << status << " though nothing was refused";
  EXPECT_TRUE(contains(rules_.codes, status)) << status << " when " << refused_ << " was refused";
  EXPECT_TRUE(ledger.balanced()) << "when " << refused_ << " was refused";
  for (const Snapshot& snapshot : kept_) EXPECT_TRUE(snapshot.unchanged()) << "when " << refused_ << " was refused";
  return status;
}

void refuseEachResource(const RefusalRules& rules, const std::function<void(RefusalRound&)>& round) {
  const int failuresBefore = failures();
  for (const Repeat repeat : {Repeat::once, Repeat::fromThenOn}) {
    unsigned points = 0;
    for (bool refused = true; refused; points += refused ? 1 : 0) {
      const unsigned n = points + 1;
      SCOPED_TRACE((repeat == Repeat::once ? "refusing resource " : "refusing resources from ") + std::to_string(n));
      const Ledger ledger;
      RefusalRound current(rules, n, repeat);
      round(current);
      refused = current.refused() != nullptr;
      EXPECT_TRUE(ledger.balanced()) << "at the end of the round";
      if (failures() != failuresBefore) return;
      ASSERT_LT(points, mostPoints);
    }
    if (repeat == Repeat::once) std::printf("[ refused  ] %u resources in turn\n", points);
    EXPECT_GE(points, rules.leastPoints);
  }
}

}  // namespace zavotest
