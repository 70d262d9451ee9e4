// The run-length form of 1-bit rows. Runs alternate in colour; the first is of 0 bits and may be empty. Pixels past
// the last run are 0, so that no runs at all mean a blank row.
//
// A run holds at most 65535 pixels. A longer one is written as several of its colour with empty runs of the other
// colour between them; whoever walks runs must take empty ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace zavo {

using RunSpan = std::span<const uint16_t>;

constexpr unsigned longestRun = 0xFFFF;

// Most runs that `count` pixels can take.
[[nodiscard]] constexpr uint64_t mostRuns(uint64_t count) {
  return count + 1;
}

// Puts a row's runs together from runs and packed bits, left to right. The buffer must have room for mostRuns() of all
// pixels added; not a byte behind the runs is touched.
class RunBuilder {
 public:
  explicit RunBuilder(uint16_t* runs) : first_(runs), end_(runs) {}

  // Pixels of one colour.
  void addRun(bool set, unsigned pixels);
  // Pixels `start` to `start` + `count` - 1 of a row of runs.
  void addRuns(RunSpan runs, unsigned start, unsigned count);
  // Packed pixels, `startPixel` counted from the first bit of `bits`.
  void addBits(const uint8_t* bits, unsigned startPixel, unsigned count);

  // Ends the last run and gives the number of runs. Nothing may be added afterwards.
  [[nodiscard]] unsigned finish();

 private:
  void closeRun();
  void addByte(unsigned byte);
  void addPartialByte(unsigned byte, unsigned used);
  unsigned addSolidBytes(const uint8_t* bits, unsigned bytes);

  uint16_t* first_;
  uint16_t* end_;
  unsigned open_ = 0;    // pixels in the run that can still grow
  unsigned invert_ = 0;  // 0xFF when that run is of 1 bits, else 0
};

// Encodes packed pixels; gives the number of runs.
unsigned encodeRuns(uint16_t* runs, const uint8_t* bits, unsigned startPixel, unsigned count);
// Decodes pixels `start` to `start` + `count` - 1 into (count + 7) / 8 bytes.
void decodeRuns(uint8_t* bits, RunSpan runs, unsigned start, unsigned count);
// Mirrors a whole row into a buffer with room for a run more than `source` has; gives the number of runs.
unsigned mirrorRuns(uint16_t* destination, RunSpan source);
// Runs of `count` pixels of 0, none longer than `longest`; gives the number of runs.
unsigned blankRuns(uint16_t* runs, unsigned count, unsigned longest = longestRun);

// --- Run records: the entry count in 32 bits, then the runs. Records in a buffer are even-aligned only.

constexpr unsigned recordHeaderBytes = 4;

[[nodiscard]] inline uint16_t* recordRuns(uint8_t* record) {
  return reinterpret_cast<uint16_t*>(record + recordHeaderBytes);
}

[[nodiscard]] inline RunSpan runsOfRecord(const uint8_t* record) {
  uint32_t entries;
  memcpy(&entries, record, sizeof entries);
  return {reinterpret_cast<const uint16_t*>(record + recordHeaderBytes), entries};
}

// Writes the entry count of a record; gives the address behind the record.
inline uint8_t* finishRecord(uint8_t* record, unsigned entries) {
  const uint32_t word = entries;
  memcpy(record, &word, sizeof word);
  return record + recordHeaderBytes + size_t{entries} * sizeof(uint16_t);
}

[[nodiscard]] inline size_t recordBytes(RunSpan runs) {
  return recordHeaderBytes + runs.size_bytes();
}

}  // namespace zavo
