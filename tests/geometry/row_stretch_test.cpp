// Stepping and the row stretch, held against floor(k * n / m) pixel by pixel.
#include "geometry/row_stretch.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "core/module.h"
#include "core/sizes.h"
#include "geometry/stepping.h"

namespace {

bool useSsse3 = true;

}  // namespace

// The stretch is compiled into this program and asks here instead of in the library.
bool zavo::cpuHasSsse3() {
  return useSsse3 && __builtin_cpu_supports("ssse3") != 0;
}

namespace {

using namespace zavo;

constexpr int depths[] = {1, 2, 3, 4, 5, 6, 7, 8, 16, 24, 32};
constexpr uint8_t sentinel = 0xA5;

// Bit `index` of a packed row, most significant first; enough to compare pixels of every depth.
unsigned bitAt(const std::vector<uint8_t>& row, uint64_t index) {
  return row[static_cast<size_t>(index / 8)] >> (7 - index % 8) & 1;
}

TEST(Stepping, NamesTheFloorOfTheRatioBothWays) {
  std::mt19937 random(11);
  const unsigned edges[] = {1, 2, 3, 5, 7, 100, 65535, 65536, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  for (int trial = 0; trial < 2000; ++trial) {
    SCOPED_TRACE(trial);
    const unsigned n = trial % 2 == 0 ? edges[random() % std::size(edges)] : random() % 1000 + 1;
    const unsigned m = trial % 3 == 0 ? edges[random() % std::size(edges)] : random() % 1000 + 1;
    const unsigned first = random() % m;
    Stepping stepping(n, m, first);
    unsigned k = first;
    const auto expected = [&] { return static_cast<unsigned>(uint64_t{k} * n / m); };
    for (int i = 0; i < 20 && k + 1 < m; ++i) {
      ASSERT_EQ(stepping.position(), expected());
      const unsigned before = stepping.position();
      const unsigned moved = stepping.advance();
      ++k;
      ASSERT_EQ(moved, stepping.position() - before);
    }
    for (int i = 0; i < 40 && k > 0; ++i) {
      ASSERT_EQ(stepping.position(), expected());
      const unsigned before = stepping.position();
      const unsigned moved = stepping.retreat();
      --k;
      ASSERT_EQ(moved, before - stepping.position());
    }
    ASSERT_EQ(stepping.position(), expected());
  }
}

struct StretchCase {
  StretchSpan span;
  int bits;
};

// Every bit of the made part, its unused bits, and the bytes around it. The source ends at the end of a page that is
// followed by one that cannot be read, so that reading past a row shows at once.
void check(const StretchCase& c, std::mt19937& random) {
  const auto bits = static_cast<unsigned>(c.bits);
  const int held = static_cast<int>(c.span.sourceWidth) + c.span.sourceShift;
  const auto sourceBytes = static_cast<size_t>(packedBytesFor(static_cast<unsigned>(held), bits));
  constexpr size_t page = 4096;
  const size_t pages = (sourceBytes + page - 1) / page * page;
  auto* guarded = static_cast<uint8_t*>(VirtualAlloc(nullptr, pages + page, MEM_RESERVE, PAGE_NOACCESS));
  ASSERT_NE(guarded, nullptr);
  ASSERT_NE(VirtualAlloc(guarded, pages, MEM_COMMIT, PAGE_READWRITE), nullptr);
  uint8_t* source = guarded + pages - sourceBytes;
  std::vector<uint8_t> copy(sourceBytes);
  for (auto& byte : copy) byte = static_cast<uint8_t>(random());
  memcpy(source, copy.data(), sourceBytes);

  const auto bytes = static_cast<size_t>(packedBytesFor(c.span.count, bits));
  std::vector<uint8_t> made(bytes + 8, sentinel);
  RowStretch stretch;
  ASSERT_EQ(stretch.plan(c.span, c.bits), KSUCCESS);
  stretch.stretch(made.data(), source);
  VirtualFree(guarded, 0, MEM_RELEASE);

  for (unsigned i = 0; i < c.span.count; ++i) {
    const auto from = static_cast<int64_t>(uint64_t{c.span.first + i} * c.span.sourceWidth / c.span.destinationWidth) +
                      c.span.sourceShift;
    for (unsigned bit = 0; bit < bits; ++bit) {
      ASSERT_EQ(bitAt(made, uint64_t{i} * bits + bit), bitAt(copy, static_cast<uint64_t>(from) * bits + bit))
          << "pixel " << i;
    }
  }
  for (uint64_t bit = uint64_t{c.span.count} * bits; bit < bytes * 8; ++bit) ASSERT_EQ(bitAt(made, bit), 0u);
  for (size_t i = bytes; i < made.size(); ++i) ASSERT_EQ(made[i], sentinel);
}

TEST(RowStretch, WholeRowsOfEveryDepthAndWidth) {
  std::mt19937 random(12);
  for (const int bits : depths) {
    for (unsigned width = 1; width <= 130; ++width) {
      const unsigned others[] = {width, 2 * width, 4 * width, (width + 1) / 2, random() % 300 + 1};
      for (const unsigned other : others) {
        SCOPED_TRACE(testing::Message() << bits << " bits, " << other << " to " << width);
        check({{width, other, 0, width, 0}, bits}, random);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(RowStretch, TriplesWithoutByteShuffles) {
  std::mt19937 random(14);
  useSsse3 = false;
  for (unsigned width = 1; width <= 70; ++width) {
    SCOPED_TRACE(width);
    check({{width, 2 * width, 0, width, 0}, 24}, random);
    check({{2 * width, width, 0, 2 * width, 0}, 24}, random);
  }
  useSsse3 = true;
}

TEST(RowStretch, PartsOfRowsFromAnyPixelOn) {
  std::mt19937 random(13);
  for (int trial = 0; trial < 3000; ++trial) {
    const unsigned destinationWidth = random() % 200 + 1;
    const unsigned widths[] = {random() % 200 + 1, destinationWidth, destinationWidth * 2, destinationWidth * 4,
                               (destinationWidth + 1) / 2};
    const unsigned sourceWidth = widths[random() % std::size(widths)];
    const unsigned first = random() % destinationWidth;
    const unsigned count = random() % (destinationWidth - first + 1);
    // The memory handed in may begin before the source row or within it, up to the first pixel needed.
    const auto firstSource = static_cast<int>(uint64_t{first} * sourceWidth / destinationWidth);
    const int shift =
        trial % 2 == 0 ? static_cast<int>(random() % 20) : -static_cast<int>(random() % (firstSource + 1));
    const int bits = depths[random() % std::size(depths)];
    SCOPED_TRACE(testing::Message() << "trial " << trial << ": " << bits << " bits, " << sourceWidth << " to "
                                    << destinationWidth << ", " << count << " from " << first << ", shift " << shift);
    check({{destinationWidth, sourceWidth, first, count, shift}, bits}, random);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
