// Whole and partial stretched rows, held against floor(k * n / m) pixel by pixel.
#include "geometry/row_stretch.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

#include "core/module.h"
#include "core/sizes.h"
#include "support/test_bitmap.h"

namespace {

bool useSsse3 = true;

}  // namespace

// The stretch is compiled into this program and asks here instead of in the library.
bool zavo::cpuHasSsse3() {
  return useSsse3 && __builtin_cpu_supports("ssse3") != 0;
}

namespace {

using namespace zavo;

constexpr size_t roomBytes = 4096;

// Bit `index` of a packed row, most significant first; enough to compare pixels of every depth.
unsigned bitAt(const std::vector<uint8_t>& row, uint64_t index) {
  return row[static_cast<size_t>(index / 8)] >> (7 - index % 8) & 1;
}

// Every bit of the made part, its unused bits, and the bytes behind it. The source ends at `sourceEnd`.
void check(const StretchSpan& span, unsigned bits, uint8_t* sourceEnd, std::mt19937& random) {
  const auto held = static_cast<unsigned>(static_cast<int>(span.sourceWidth) + span.sourceShift);
  std::vector<uint8_t> source(static_cast<size_t>(packedBytesFor(held, bits)));
  for (auto& byte : source) byte = static_cast<uint8_t>(random());
  ASSERT_LE(source.size(), roomBytes);
  memcpy(sourceEnd - source.size(), source.data(), source.size());
  const auto bytes = static_cast<size_t>(packedBytesFor(span.count, bits));
  std::vector<uint8_t> made(bytes + 8, 0xA5);
  RowStretch stretch;
  ASSERT_EQ(stretch.plan(span, static_cast<int>(bits)), KSUCCESS);
  stretch.stretch(made.data(), sourceEnd - source.size());

  for (unsigned i = 0; i < span.count; ++i) {
    const uint64_t from = uint64_t{span.first + i} * span.sourceWidth / span.destinationWidth;
    const auto at = static_cast<uint64_t>(static_cast<int64_t>(from) + span.sourceShift);
    for (unsigned bit = 0; bit < bits; ++bit) {
      ASSERT_EQ(bitAt(made, i * bits + bit), bitAt(source, at * bits + bit)) << "pixel " << i;
    }
  }
  for (uint64_t bit = span.count * bits; bit < bytes * 8; ++bit) ASSERT_EQ(bitAt(made, bit), 0u);
  for (size_t i = bytes; i < made.size(); ++i) ASSERT_EQ(made[i], 0xA5);
}

TEST(RowStretch, TakesTheSourceOfEveryPixel) {
  // Reading past a source row shows at once: a page follows that cannot be touched.
  auto* room = static_cast<uint8_t*>(VirtualAlloc(nullptr, 2 * roomBytes, MEM_RESERVE, PAGE_NOACCESS));
  ASSERT_NE(VirtualAlloc(room, roomBytes, MEM_COMMIT, PAGE_READWRITE), nullptr);
  std::mt19937 random(13);
  for (int trial = 0; trial < 9000 && !HasFatalFailure(); ++trial) {
    const unsigned width = trial % 3 == 0 ? static_cast<unsigned>(trial) / 3 % 130 + 1 : random() % 200 + 1;
    const unsigned widths[] = {random() % 200 + 1, width, width * 2, width * 4, (width + 1) / 2};
    const unsigned sourceWidth = widths[random() % std::size(widths)];
    const bool whole = trial % 3 == 0;
    const unsigned first = whole ? 0 : random() % width;
    const unsigned count = whole ? width : random() % (width - first + 1);
    // The memory handed in may begin before the source row or within it, up to the first pixel needed.
    const auto firstSource = static_cast<int>(first * sourceWidth / width);
    const int within = -static_cast<int>(random() % static_cast<unsigned>(firstSource + 1));
    const int shift = random() % 2 == 0 ? static_cast<int>(random() % 20) : within;
    const auto bits = static_cast<unsigned>(zavotest::allDepths[random() % std::size(zavotest::allDepths)]);
    useSsse3 = random() % 2 == 0;
    SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << bits << " bits, " << sourceWidth << " to " << width
                                    << ", " << count << " from " << first << ", shift " << shift);
    check({width, sourceWidth, first, count, shift}, bits, room + roomBytes, random);
  }
  VirtualFree(room, 0, MEM_RELEASE);
}

}  // namespace
