// Encoding takes a byte at a time through tables of the runs of every byte value; decoding fills whole bytes.
#include "core/run_records.h"

#include <algorithm>

namespace zavo {
namespace {

// The runs of a byte's bits, from the most significant bit down; the first has the colour of that bit.
struct ByteRuns {
  alignas(16) uint16_t lengths[256][8];
  uint8_t counts[256];
};

constexpr ByteRuns makeByteRuns() {
  ByteRuns table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned last = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
      if (bit > 0 && (byte >> (7 - bit) & 1) != (byte >> (8 - bit) & 1)) ++last;
      ++table.lengths[byte][last];
    }
    table.counts[byte] = static_cast<uint8_t>(last + 1);
  }
  return table;
}

constexpr ByteRuns byteRuns = makeByteRuns();

constexpr unsigned topBit = 0x80;

// Sets `count` bits, at least 1.
void setBits(uint8_t* bits, unsigned start, unsigned count) {
  const unsigned end = start + count;
  const unsigned headMask = 0xFFu >> start % 8;
  const unsigned tailMask = 0xFF00u >> end % 8 & 0xFF;
  uint8_t* head = bits + start / 8;
  uint8_t* tail = bits + end / 8;
  if (head == tail) {
    *head = static_cast<uint8_t>(*head | (headMask & tailMask));
    return;
  }
  *head = static_cast<uint8_t>(*head | headMask);
  if (tail - head > 1) memset(head + 1, 0xFF, static_cast<size_t>(tail - head - 1));
  if (tailMask != 0) *tail = static_cast<uint8_t>(tailMask);
}

}  // namespace

// Writes the open run; the next one starts with the other colour.
inline void RunBuilder::closeRun() {
  while (open_ > longestRun) {
    *end_++ = static_cast<uint16_t>(longestRun);
    *end_++ = 0;
    open_ -= longestRun;
  }
  *end_++ = static_cast<uint16_t>(open_);
}

void RunBuilder::addRun(bool set, unsigned pixels) {
  if (pixels == 0) return;
  if (set != (invert_ != 0)) {
    closeRun();
    invert_ ^= 0xFF;
    open_ = 0;
  }
  open_ += pixels;
}

void RunBuilder::addRuns(RunSpan runs, unsigned start, unsigned count) {
  if (count == 0) return;
  size_t run = 0;
  while (run < runs.size() && runs[run] <= start) start -= runs[run++];
  for (; run < runs.size() && count > 0; ++run) {
    const unsigned pixels = std::min(runs[run] - start, count);
    addRun(run % 2 != 0, pixels);
    count -= pixels;
    start = 0;
  }
  addRun(false, count);
}

inline void RunBuilder::addByte(unsigned byte) {
  byte ^= invert_;  // the open run's colour is 0 now
  const uint16_t* lengths = byteRuns.lengths[byte];
  unsigned count = byteRuns.counts[byte];
  if (byte < topBit) {
    open_ += *lengths++;
    if (--count == 0) return;
  }
  closeRun();
  const unsigned whole = count - 1;
  for (unsigned i = 0; i < whole; ++i) end_[i] = lengths[i];
  end_ += whole;
  open_ = lengths[whole];
  if (count % 2 != 0) invert_ ^= 0xFF;
}

// The bits behind the first `used` ones take the colour of the last of those, and are taken off its run.
inline void RunBuilder::addPartialByte(unsigned byte, unsigned used) {
  const unsigned unusedMask = 0xFFu >> used;
  const bool set = (byte >> (8 - used) & 1) != 0;
  addByte(set ? byte | unusedMask : byte & ~unusedMask);
  open_ -= 8 - used;
}

// Takes whole bytes of the open run's colour, four at a time; gives the number of bytes taken.
inline unsigned RunBuilder::addSolidBytes(const uint8_t* bits, unsigned bytes) {
  const uint32_t solid = invert_ != 0 ? 0xFFFFFFFF : 0;
  unsigned taken = 0;
  for (uint32_t word; bytes - taken >= 4; taken += 4) {
    memcpy(&word, bits + taken, 4);
    if (word != solid) break;
  }
  open_ += taken * 8;
  return taken;
}

void RunBuilder::addBits(const uint8_t* bits, unsigned startPixel, unsigned count) {
  if (count == 0) return;
  RunBuilder builder = *this;  // a copy, so that the loop works on registers
  bits += startPixel / 8;
  if (const unsigned skipped = startPixel % 8; skipped != 0) {
    // The bits before the start join the open run, which is shortened beforehand; it may wrap below zero meanwhile.
    builder.open_ -= skipped;
    const unsigned skippedMask = 0xFF00u >> skipped & 0xFF;
    const unsigned byte = (*bits & ~skippedMask) | (builder.invert_ & skippedMask);
    const unsigned used = std::min(8 - skipped, count);
    builder.addPartialByte(byte, skipped + used);
    count -= used;
    ++bits;
  }
  while (count >= 8) {
    if (const unsigned taken = builder.addSolidBytes(bits, count / 8); taken != 0) {
      bits += taken;
      count -= taken * 8;
      continue;
    }
    builder.addByte(*bits++);
    count -= 8;
  }
  if (count > 0) builder.addPartialByte(*bits, count);
  *this = builder;
}

unsigned RunBuilder::finish() {
  closeRun();
  return static_cast<unsigned>(end_ - first_);
}

unsigned encodeRuns(uint16_t* runs, const uint8_t* bits, unsigned startPixel, unsigned count) {
  RunBuilder builder(runs);
  builder.addBits(bits, startPixel, count);
  return builder.finish();
}

void decodeRuns(uint8_t* bits, RunSpan runs, unsigned start, unsigned count) {
  memset(bits, 0, size_t{count / 8} + (count % 8 != 0));
  size_t run = 0;
  while (run < runs.size() && runs[run] <= start) start -= runs[run++];
  for (unsigned position = 0; run < runs.size() && position < count; ++run) {
    const unsigned pixels = std::min(runs[run] - start, count - position);
    if (run % 2 != 0 && pixels != 0) setBits(bits, position, pixels);
    position += pixels;
    start = 0;
  }
}

unsigned mirrorRuns(uint16_t* destination, RunSpan source) {
  if (source.empty()) return 0;
  uint16_t* end = destination;
  if (source.size() % 2 == 0) *end++ = 0;
  if (source.front() == 0) source = source.subspan(1);
  end = std::reverse_copy(source.begin(), source.end(), end);
  return static_cast<unsigned>(end - destination);
}

unsigned blankRuns(uint16_t* runs, unsigned count, unsigned longest) {
  unsigned entries = 0;
  for (; count > longest; count -= longest) {
    runs[entries++] = static_cast<uint16_t>(longest);
    runs[entries++] = 0;
  }
  runs[entries++] = static_cast<uint16_t>(count);
  return entries;
}

}  // namespace zavo
