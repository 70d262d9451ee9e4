// Run records: encoding, decoding, mirroring and flipping, against rows of plain pixels.
#include <zavo.h>

#include <gtest/gtest.h>

#include "support/run_model.h"

namespace {

using namespace zavotest;
using Runs = std::vector<uint16_t>;

TEST(RunRecords, EveryStartAndCount) {
  std::mt19937 random(11);
  for (unsigned start = 0; start < 40; ++start) {
    for (unsigned count = 0; count <= 140; ++count) {
      SCOPED_TRACE(testing::Message() << "start " << start << " count " << count);
      // The bits around the piece must not count, and of the start only the remainder by 8.
      const Pixels pixels = randomPixels(random, 200);
      const Bytes bits = packed(pixels);
      Bytes expected = recordOf(part(pixels, start, count));
      expected.resize(expected.size() + 32, filler);
      Bytes made(expected.size(), filler);
      ASSERT_EQ(Zv_CompressRow(made.data(), bits.data() + start / 8, start, count), static_cast<int>(count));
      ASSERT_EQ(made, expected);

      // What is wanted beyond the record's end is zeros.
      const Pixels shorter = part(pixels, 0, 150);
      expected = packed(part(shorter, start, count));
      expected.resize(expected.size() + 8, filler);
      made.assign(expected.size(), filler);
      ASSERT_EQ(Zv_ExpandRow(recordOf(shorter).data(), made.data(), start, count), KSUCCESS);
      ASSERT_EQ(made, expected);
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
    Bytes bits(2, filler);
    ASSERT_EQ(Zv_ExpandRow(record(c.runs).data(), bits.data(), 0, 16), KSUCCESS);
    EXPECT_EQ(bits, c.bits) << "runs " << testing::PrintToString(c.runs);
  }
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
    Bytes made(expected.size()), expanded(bits.size());
    Zv_CompressRow(made.data(), bits.data(), 0, static_cast<unsigned>(pixels.size()));
    EXPECT_EQ(made, expected);
    Zv_ExpandRow(expected.data(), expanded.data(), 0, static_cast<unsigned>(pixels.size()));
    EXPECT_EQ(expanded, bits);
  }
}

TEST(RunRecords, BuffersOfRows) {
  std::mt19937 random(13);
  for (unsigned width = 1; width <= 200; ++width) {
    SCOPED_TRACE(testing::Message() << "width " << width);
    const unsigned rows = width % 5 + 1;
    const size_t stride = (width + 31) / 32 * 4;
    Bytes bits, records, mirrored, flipped;
    for (unsigned row = 0; row < rows; ++row) {
      const Pixels pixels = randomPixels(random, width);
      append(bits, packed(pixels));
      bits.resize(stride * (row + 1), filler);
      append(records, recordOf(pixels));
      append(mirrored, recordOf(Pixels(pixels.rbegin(), pixels.rend())));
      Bytes first = recordOf(pixels);
      append(first, flipped);
      flipped = first;
    }
    Bytes made(records.size()), expanded(bits.size(), filler);
    EXPECT_EQ(Zv_CompressRows(made.data(), bits.data(), width, rows), KSUCCESS);
    EXPECT_EQ(made, records);
    EXPECT_EQ(Zv_ExpandRows(records.data(), expanded.data(), width, rows), KSUCCESS);
    EXPECT_EQ(expanded, bits);
    EXPECT_EQ(Zv_FlipCompressedBuffer(records.data(), made.data(), rows), KSUCCESS);
    EXPECT_EQ(made, flipped);
    made.assign(mirrored.size(), filler);
    EXPECT_EQ(Zv_MirrorCompressedBuffer(records.data(), made.data(), rows), KSUCCESS);
    EXPECT_EQ(made, mirrored);
  }
}

TEST(RunRecords, RefusesNull) {
  uint8_t bytes[8] = {};
  for (uint8_t* missing : {static_cast<uint8_t*>(nullptr), bytes}) {
    uint8_t* given = missing == nullptr ? bytes : nullptr;
    EXPECT_EQ(Zv_CompressRow(given, missing, 0, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_CompressRows(given, missing, 1, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_ExpandRow(given, missing, 0, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_ExpandRows(given, missing, 1, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_MirrorCompressedBuffer(given, missing, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_FlipCompressedBuffer(given, missing, 1), KERR_BAD_PARAMETER);
  }
}

}  // namespace
