// The row stretch: the source of every stretched pixel is worked out once, so that making a row is one table load and
// one copy a pixel. Rows of an unchanged width are copied whole.
#include "geometry/row_stretch.h"

#include <cstring>

#include "core/sizes.h"
#include "geometry/packed_fetch.h"
#include "geometry/row_stretch_even.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

using Counts = RowStretch::Counts;
using Worker = RowStretch::Worker;

template <typename T>
void copyPixel(uint8_t* destination, const uint8_t* source) {
  memcpy(destination, source, sizeof(T));
}

// 8, 16 and 32 bits.
template <typename Pixel>
void stretchWords(uint8_t* destination, const uint8_t* source, const uint32_t* offsets, const Counts& counts) {
  for (unsigned i = 0; i < counts.pixels; ++i) {
    copyPixel<Pixel>(destination + i * sizeof(Pixel), source + offsets[i]);
  }
}

// A 24-bit pixel is moved as a word while its fourth byte is harmless: the next pixel overwrites it.
void stretchTriples(uint8_t* destination, const uint8_t* source, const uint32_t* offsets, const Counts& counts) {
  unsigned i = 0;
  for (; i < counts.loose; ++i) copyPixel<uint32_t>(destination + size_t{i} * 3, source + offsets[i]);
  for (; i < counts.pixels; ++i) memcpy(destination + size_t{i} * 3, source + offsets[i], 3);
}

// Eight pixels make `bits` whole bytes.
template <unsigned bits>
void stretchPacked(uint8_t* destination, const uint8_t* source, const uint32_t* pixels, const Counts& counts) {
  unsigned left = counts.pixels;
  for (; left >= 8; left -= 8, pixels += 8, destination += bits) {
    uint32_t high = 0;
    uint32_t low = 0;
    for (unsigned i = 0; i < 4; ++i) high = high << bits | packedAt<bits>(source, pixels[i]);
    for (unsigned i = 4; i < 8; ++i) low = low << bits | packedAt<bits>(source, pixels[i]);
    const uint64_t group = uint64_t{high} << 4 * bits | low;
    for (unsigned i = 0; i < bits; ++i) destination[i] = static_cast<uint8_t>(group >> (bits - 1 - i) * 8);
  }
  if (left == 0) return;
  uint64_t group = 0;
  for (unsigned i = 0; i < 8; ++i) group = group << bits | (i < left ? packedAt<bits>(source, pixels[i]) : 0);
  for (unsigned i = 0; i < packedBytesFor(left, bits); ++i) {
    destination[i] = static_cast<uint8_t>(group >> (bits - 1 - i) * 8);
  }
}

template <unsigned bits>
void copyRow(uint8_t* destination, const uint8_t* source, const uint32_t*, const Counts& counts) {
  const auto bytes = static_cast<size_t>(packedBytesFor(counts.pixels, bits));
  memcpy(destination, source, bytes);
  if constexpr (bits < 8) {
    const unsigned used = counts.pixels % 8 * bits % 8;
    if (used != 0) destination[bytes - 1] = static_cast<uint8_t>(destination[bytes - 1] & 0xFF00u >> used);
  }
}

struct Workers {
  Worker stretch;
  Worker copy;
};

Workers workersFor(int bitsPerPixel) {
  switch (bitsPerPixel) {
    case 1:
      return {stretchPacked<1>, copyRow<1>};
    case 2:
      return {stretchPacked<2>, copyRow<2>};
    case 3:
      return {stretchPacked<3>, copyRow<3>};
    case 4:
      return {stretchPacked<4>, copyRow<4>};
    case 5:
      return {stretchPacked<5>, copyRow<5>};
    case 6:
      return {stretchPacked<6>, copyRow<6>};
    case 7:
      return {stretchPacked<7>, copyRow<7>};
    case 8:
      return {stretchWords<uint8_t>, copyRow<8>};
    case 16:
      return {stretchWords<uint16_t>, copyRow<16>};
    case 24:
      return {stretchTriples, copyRow<24>};
    default:
      return {stretchWords<uint32_t>, copyRow<32>};
  }
}

// The worker for rows whose sources need no table, if the first source pixel begins at a byte; else null.
Worker workerWithoutTable(const StretchSpan& span, int bitsPerPixel) {
  if (span.count == 0 || span.destinationWidth == span.sourceWidth) return workersFor(bitsPerPixel).copy;
  if (span.destinationWidth > span.sourceWidth && span.first % 2 != 0) return nullptr;
  return evenStretchWorker(span.destinationWidth, span.sourceWidth, bitsPerPixel);
}

}  // namespace

int RowStretch::plan(const StretchSpan& span, int bitsPerPixel) {
  const auto bits = static_cast<unsigned>(bitsPerPixel);
  counts_ = {span.count, 0};
  Stepping stepping(span.sourceWidth, span.destinationWidth, span.first);
  const auto firstSource = static_cast<unsigned>(static_cast<int64_t>(stepping.position()) + span.sourceShift);

  // Eight pixels are whole bytes in every depth, so the table counts from a multiple of eight.
  const unsigned aligned = firstSource / 8 * 8;
  const unsigned bitsBefore = (firstSource - aligned) * bits;
  sourceStart_ = static_cast<size_t>(packedBytesFor(aligned, bits));
  if (const Worker worker = workerWithoutTable(span, bitsPerPixel); worker != nullptr && bitsBefore % 8 == 0) {
    sourceStart_ += bitsBefore / 8;
    sources_.reset();
    worker_ = worker;
    return KSUCCESS;
  }

  sources_ = OsBlock<uint32_t>::allocate(span.count);
  if (!sources_) return KERR_NO_MEMORY;
  const unsigned scale = bits < 8 ? 1 : bits / 8;
  unsigned source = firstSource - aligned;
  for (unsigned i = 0; i < span.count; ++i) {
    sources_[i] = source * scale;
    source += stepping.advance();
  }
  while (counts_.loose < span.count && sources_[counts_.loose] < sources_[span.count - 1]) ++counts_.loose;
  worker_ = workersFor(bitsPerPixel).stretch;
  return KSUCCESS;
}

}  // namespace zavo
