// Every operation on every kind of storage of the host: with each resource refused in turn, and with the same result
// whatever the storage. Compiled for an ordinary host and for a legacy host.
#include "robustness/operations.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

#include "support/refusals.h"

namespace {

using namespace zavotest;

bool isLegacyHost() {
  return (GetVersion() & 0x80000000u) != 0;
}

// The memory types that give different kinds of storage on this host.
std::vector<int> storageKinds(int bits) {
  std::vector<int> types = {ALLOC_MEMORY_ONLY};
  if (isLegacyHost()) types.push_back(ALLOC_DISK);
  if (bits == 1) types.push_back(ALLOC_RUNLENGTH);
  return types;
}

// What an operation left in its subjects.
struct Result {
  int status = 0;
  Picture pictures[2];
  RegionExtent regions[2];
};

Result resultIn(Subjects& subjects, const Operation& operation, int status) {
  Result result{status, {}, {}};
  BitmapHandle* const bitmaps[] = {&subjects.bitmap, &subjects.out};
  for (size_t i = 0; i < std::size(bitmaps); ++i) {
    const bool defined = operation.definesPixels || !isLegacyHost();
    if ((bitmaps[i]->Flags & BMF_ALLOCATED) != 0 && defined) result.pictures[i] = pictureOf(*bitmaps[i]);
    result.regions[i] = regionExtentOf(*bitmaps[i]);
  }
  return result;
}

void expectSame(const Result& result, const Result& expected) {
  EXPECT_EQ(result.status, expected.status);
  for (size_t i = 0; i < std::size(result.pictures); ++i) {
    EXPECT_TRUE(result.pictures[i] == expected.pictures[i]) << "bitmap " << i;
    EXPECT_TRUE(result.regions[i] == expected.regions[i]) << "region " << i;
  }
}

// Results on the first kind of storage, the same in every test.
const Result& expectedResult(const Operation& operation, int bits) {
  static std::map<std::pair<const Operation*, int>, Result> results;
  const auto [entry, isNew] = results.try_emplace({&operation, bits});
  if (isNew) {
    Subjects subjects(bits, ALLOC_MEMORY_ONLY);
    const int status = operation.run(subjects);
    entry->second = resultIn(subjects, operation, status);
  }
  return entry->second;
}

TEST(Operations, DoTheSameOnEveryStorage) {
  for (const Operation& operation : operations()) {
    for (const int bits : allDepths) {
      for (const int memoryType : storageKinds(bits)) {
        SCOPED_TRACE(testing::Message() << operation.name << ", " << bits << " bits, memory type " << memoryType);
        Subjects subjects(bits, memoryType);
        const int status = operation.run(subjects);
        expectSame(resultIn(subjects, operation, status), expectedResult(operation, bits));
      }
    }
  }
}

TEST(Operations, SurviveTheRefusalOfEveryResource) {
  for (const Operation& operation : operations()) {
    RefusalRules rules{.survived = operation.survived, .leastPoints = 0};
    rules.survived.emplace_back("GlobalReAlloc");                    // memory that is too large is as good
    if (isLegacyHost()) rules.survived.emplace_back("GlobalAlloc");  // a temporary file is as good
    for (const int bits : {1, 8, 24}) {
      for (const int memoryType : storageKinds(bits)) {
        if (bits == 24 && memoryType != ALLOC_MEMORY_ONLY) continue;
        SCOPED_TRACE(testing::Message() << operation.name << ", " << bits << " bits, memory type " << memoryType);
        const Result& expected = expectedResult(operation, bits);
        refuseEachResource(rules, [&](RefusalRound& round) {
          Subjects subjects(bits, memoryType);
          round.keeps(subjects.bitmap);
          const int status = round.run([&] { return operation.run(subjects); });
          if (status > 0) expectSame(resultIn(subjects, operation, status), expected);
        });
      }
    }
  }
}

}  // namespace
