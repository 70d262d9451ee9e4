// Run records: encoding, decoding, mirroring and flipping, against rows of plain pixels.
#include <zavo.h>

#include <algorithm>
#include <gtest/gtest.h>

#include "support/run_model.h"

namespace {

using namespace zavotest;
using Runs = std::vector<uint16_t>;

// Encodes into a buffer with nothing to spare and a filler behind it.
Bytes compressed(const Bytes& bits, unsigned startPixel, unsigned count, size_t expectedBytes) {
  Bytes buffer(expectedBytes + 32, filler);
  EXPECT_EQ(Zv_CompressRow(buffer.data(), bits.data(), startPixel, count), static_cast<int>(count));
  const Bytes made = recordAt(buffer.data());
  EXPECT_EQ(
      std::count(buffer.begin() + static_cast<ptrdiff_t>(std::min(made.size(), buffer.size())), buffer.end(), filler),
      static_cast<ptrdiff_t>(buffer.size() - made.size()))
      << "bytes behind the record were written";
  return made;
}

Bytes mirrored(const Bytes& source) {
  Bytes buffer(source.size() + 2);
  EXPECT_EQ(Zv_MirrorCompressedBuffer(source.data(), buffer.data(), 1), KSUCCESS);
  return recordAt(buffer.data());
}

TEST(RunRecords, KnownBytes) {
  const struct {
    uint8_t byte;
    Runs runs;
  } cases[] = {{0x0F, {4, 4}},
               {0xF0, {0, 4, 4}},
               {0x00, {8}},
               {0xFF, {0, 8}},
               {0xAA, {0, 1, 1, 1, 1, 1, 1, 1, 1}},
               {0x55, {1, 1, 1, 1, 1, 1, 1, 1}}};
  for (const auto& c : cases) {
    const Bytes expected = record(c.runs);
    EXPECT_EQ(compressed({c.byte}, 0, 8, expected.size()), expected) << "byte " << int{c.byte};
  }
}

TEST(RunRecords, EveryStartAndCountEncodes) {
  std::mt19937 random(11);
  for (unsigned start = 0; start < 8; ++start) {
    for (unsigned count = 0; count <= 140; ++count) {
      SCOPED_TRACE(testing::Message() << "start " << start << " count " << count);
      const Pixels pixels = randomPixels(random, count);
      // The bits around the piece are noise that must not count.
      Pixels around = randomPixels(random, start);
      around.insert(around.end(), pixels.begin(), pixels.end());
      around.resize(around.size() + 8, random() % 2 != 0);
      const Bytes bits = packed(around);
      const Bytes expected = recordOf(pixels);
      ASSERT_EQ(compressed(bits, start, count, expected.size()), expected);
      ASSERT_EQ(compressed(bits, start + 24, count, expected.size()), expected) << "only the remainder by 8 counts";
    }
  }
}

TEST(RunRecords, EveryStartAndCountDecodes) {
  std::mt19937 random(12);
  for (unsigned start = 0; start < 40; ++start) {
    for (unsigned count = 0; count <= 140; ++count) {
      SCOPED_TRACE(testing::Message() << "start " << start << " count " << count);
      const Pixels pixels = randomPixels(random, 150);
      const Bytes source = recordOf(pixels);
      Bytes expected = packed(part(pixels, start, count));
      expected.resize(expected.size() + 8, filler);
      Bytes bits(expected.size(), filler);
      ASSERT_EQ(Zv_ExpandRow(source.data(), bits.data(), start, count), KSUCCESS);
      ASSERT_EQ(bits, expected);
    }
  }
}

TEST(RunRecords, EmptyRunsAndShortRecordsDecode) {
  const struct {
    Runs runs;
    Bytes bits;
  } cases[] = {{{}, {0x00, 0x00}},          {{0}, {0x00, 0x00}},
               {{0, 3}, {0xE0, 0x00}},      {{0, 0, 2, 1, 0, 1, 4, 0, 0, 1}, {0x30, 0x80}},
               {{0, 0xFFFF}, {0xFF, 0xFF}}, {{15, 0xFFFF, 7}, {0x00, 0x01}}};
  for (const auto& c : cases) {
    const Bytes source = record(c.runs);
    Bytes bits(2, filler);
    ASSERT_EQ(Zv_ExpandRow(source.data(), bits.data(), 0, 16), KSUCCESS);
    EXPECT_EQ(bits, c.bits) << "runs " << testing::PrintToString(c.runs);
  }
}

TEST(RunRecords, RowsLieStrideApart) {
  std::mt19937 random(13);
  for (const unsigned width : {1u, 7u, 8u, 31u, 32u, 33u, 100u}) {
    SCOPED_TRACE(testing::Message() << "width " << width);
    constexpr unsigned rows = 5;
    const size_t stride = (width + 31) / 32 * 4;
    Bytes bits, records, expanded(stride * rows, filler);
    for (unsigned row = 0; row < rows; ++row) {
      const Pixels pixels = randomPixels(random, width);
      Bytes rowBits = packed(pixels);
      rowBits.resize(stride, filler);
      append(bits, rowBits.data(), stride);
      const Bytes made = recordOf(pixels);
      append(records, made.data(), made.size());
    }
    Bytes buffer(records.size());
    ASSERT_EQ(Zv_CompressRows(buffer.data(), bits.data(), width, rows), KSUCCESS);
    EXPECT_EQ(buffer, records);
    ASSERT_EQ(Zv_ExpandRows(buffer.data(), expanded.data(), width, rows), KSUCCESS);
    // The padding was the filler in the source too.
    EXPECT_EQ(expanded, bits);
  }
  EXPECT_EQ(Zv_ExpandRows("", Bytes(4).data(), 10, 0), KSUCCESS);
}

TEST(RunRecords, RunsLongerThan16Bits) {
  const struct {
    size_t zeros, ones;
    Runs runs;
  } cases[] = {{65535, 0, {0xFFFF}},
               {65536, 0, {0xFFFF, 0, 1}},
               {0, 65536, {0, 0xFFFF, 0, 1}},
               {200000, 3, {0xFFFF, 0, 0xFFFF, 0, 0xFFFF, 0, 3395, 3}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.zeros << " zeros, " << c.ones << " ones");
    Pixels pixels(c.zeros, false);
    pixels.resize(c.zeros + c.ones, true);
    const Bytes bits = packed(pixels);
    const Bytes expected = record(c.runs);
    EXPECT_EQ(compressed(bits, 0, static_cast<unsigned>(pixels.size()), expected.size()), expected);
    Bytes expanded(bits.size());
    Zv_ExpandRow(expected.data(), expanded.data(), 0, static_cast<unsigned>(pixels.size()));
    EXPECT_EQ(expanded, bits);
  }
}

TEST(RunRecords, MirrorTurnsThePixelsRound) {
  EXPECT_EQ(mirrored(record({0, 4, 4})), record({4, 4}));
  EXPECT_EQ(mirrored(record({4, 4})), record({0, 4, 4}));
  EXPECT_EQ(mirrored(record({100})), record({100}));
  std::mt19937 random(14);
  for (size_t count = 1; count <= 80; ++count) {
    const Pixels pixels = randomPixels(random, count);
    const Pixels turned(pixels.rbegin(), pixels.rend());
    ASSERT_EQ(mirrored(recordOf(pixels)), recordOf(turned)) << "count " << count;
    ASSERT_EQ(mirrored(mirrored(recordOf(pixels))), recordOf(pixels)) << "count " << count;
  }
}

TEST(RunRecords, MirrorAndFlipWalkABuffer) {
  const Bytes first = record({4, 4}), second = record({9}), third = record({0, 2, 6});
  ASSERT_EQ(first.size(), 8u);
  ASSERT_EQ(second.size(), 6u);
  ASSERT_EQ(third.size(), 10u);
  Bytes source, flipped, turned;
  for (const Bytes& r : {first, second, third}) append(source, r.data(), r.size());
  for (const Bytes& r : {third, second, first}) append(flipped, r.data(), r.size());
  for (const Bytes& r : {record({0, 4, 4}), record({9}), record({6, 2})}) append(turned, r.data(), r.size());

  Bytes destination(source.size());
  EXPECT_EQ(Zv_FlipCompressedBuffer(source.data(), destination.data(), 3), KSUCCESS);
  EXPECT_EQ(destination, flipped);
  destination.assign(turned.size(), 0);
  EXPECT_EQ(Zv_MirrorCompressedBuffer(source.data(), destination.data(), 3), KSUCCESS);
  EXPECT_EQ(destination, turned);

  EXPECT_EQ(Zv_FlipCompressedBuffer(source.data(), destination.data(), 0), KSUCCESS);
  EXPECT_EQ(Zv_FlipCompressedBuffer(nullptr, destination.data(), 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_FlipCompressedBuffer(source.data(), nullptr, 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_MirrorCompressedBuffer(nullptr, destination.data(), 1), KERR_BAD_PARAMETER);
  EXPECT_EQ(Zv_MirrorCompressedBuffer(source.data(), nullptr, 1), KERR_BAD_PARAMETER);
}

}  // namespace
