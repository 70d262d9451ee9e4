// What the other tests stand on notices what it is there to notice.
#include <zavo.h>

#include <functional>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <utility>

#include "support/guard_pages.h"
#include "support/refusals.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

TEST(Ground, RefusalsMeetTheNthCall) {
  const struct {
    Repeat repeat;
    bool expected[4];
  } cases[] = {{Repeat::once, {true, false, true, true}}, {Repeat::fromThenOn, {true, false, false, false}}};
  for (const auto& c : cases) {
    const CallCount count("GlobalAlloc");
    const Refusal refusal("GlobalAlloc", 2, c.repeat);
    for (const bool expected : c.expected) {
      void* block = Zv_OsAlloc(10);
      EXPECT_EQ(block != nullptr, expected);
      Zv_OsFree(block);
    }
    EXPECT_EQ(count.get(), 4u);
    EXPECT_STREQ(refusal.refused(), "GlobalAlloc");
  }
}

// What the work reports as failures, kept from the running test.
int failuresIn(const std::function<void()>& work) {
  testing::TestPartResultArray failures;
  const testing::ScopedFakeTestPartResultReporter kept(
      testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
  work();
  return failures.size();
}

TEST(Ground, TheLoopOverRefusalsFindsFaults) {
  // An operation that takes two blocks and, when the second is refused, does what the case says.
  struct Faults {
    bool leaks = false;
    int status = KERR_NO_MEMORY;
    bool changes = false;
  };
  const auto run = [](Faults faults) {
    return failuresIn([faults] {
      refuseEachResource({.leastPoints = 2}, [faults](RefusalRound& round) {
        TestBitmap bitmap(10, 10, 8);
        round.keeps(bitmap);
        void* first = nullptr;
        void* second = nullptr;
        round.run([&] {
          first = Zv_OsAlloc(10);
          if (first == nullptr) return int{KERR_NO_MEMORY};
          second = Zv_OsAlloc(10);
          if (second != nullptr) return int{KSUCCESS};
          if (!faults.leaks) Zv_OsFree(std::exchange(first, nullptr));
          if (faults.changes) ++bitmap.Data[13];
          return faults.status;
        });
        Zv_OsFree(first);
        Zv_OsFree(second);
      });
    });
  };
  EXPECT_EQ(run({}), 0);
  EXPECT_GT(run({.leaks = true}), 0);
  EXPECT_GT(run({.status = KERR_READ}), 0);
  EXPECT_GT(run({.status = KSUCCESS}), 0);
  EXPECT_GT(run({.changes = true}), 0);
}

// Bytes at and after an address that the page there lets a program touch.
size_t accessibleBytes(const void* address) {
  MEMORY_BASIC_INFORMATION page{};
  VirtualQuery(address, &page, sizeof page);
  const bool accessible = page.State == MEM_COMMIT && (page.Protect & PAGE_READWRITE) != 0;
  return accessible ? page.RegionSize - static_cast<size_t>(static_cast<const char*>(address) -
                                                            static_cast<const char*>(page.BaseAddress))
                    : 0;
}

TEST(Ground, GuardedMemoryEndsWhereItSays) {
  const GuardPages guard;
  for (const unsigned bytes : {8u, 400u, 4096u, 100000u}) {
    auto* block = static_cast<uint8_t*>(Zv_OsAlloc(bytes));
    EXPECT_EQ(accessibleBytes(block), bytes);
    GlobalUnlock(GlobalHandle(block));
    EXPECT_EQ(accessibleBytes(block), 0u);
    EXPECT_EQ(GlobalLock(GlobalHandle(block)), block);
    auto* resized = static_cast<uint8_t*>(Zv_OsReAlloc(block, bytes + 8));
    EXPECT_EQ(accessibleBytes(resized), bytes + 8);
    EXPECT_EQ(accessibleBytes(block), 0u);
    Zv_OsFree(resized);
  }
  TestBitmap bitmap(11, 10, 24);
  EXPECT_EQ(accessibleBytes(bitmap.Data), 10u * 36u);
  EXPECT_GT(failuresIn([] {
              auto* block = static_cast<uint8_t*>(Zv_OsAlloc(100));
              block[-1] = 0;
              Zv_OsFree(block);
            }),
            0);
}

}  // namespace
