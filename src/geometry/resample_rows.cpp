// The row workers of resampling, for sums of any size, and the choice between them and the vector forms.
#include "geometry/resample_rows.h"

#include <algorithm>
#include <cstring>

#include "geometry/resample_rows_sse2.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

// Division of the sum of a number of bytes by that number, for many sums. With r = floor((2^32 - 1) / count), the high
// word of (sum + 1) * r is the quotient as long as 255 * count * count stays well below 2^32.
class ReciprocalAverage {
 public:
  using Sum = uint32_t;
  static constexpr unsigned largestCount = 4096;

  explicit ReciprocalAverage(unsigned count) : reciprocal_(UINT32_MAX / count) {}
  uint8_t operator()(Sum sum) const { return static_cast<uint8_t>(uint64_t{sum + 1} * reciprocal_ >> 32); }

 private:
  uint32_t reciprocal_;
};

// The same for any count.
class PlainAverage {
 public:
  using Sum = uint64_t;

  explicit PlainAverage(unsigned count) : count_(count) {}
  uint8_t operator()(Sum sum) const {
    return static_cast<uint8_t>(sum / count_);  // NOLINT(clang-analyzer-core.DivideZero): an average is of something
  }

 private:
  unsigned count_;
};

// Every destination pixel is the average of the source pixels it stands for, which are as many for all or one more
// for some.
template <unsigned channels, typename Average>
void shrinkRow(uint8_t* destination, const uint8_t* source, unsigned destinationWidth, unsigned sourceWidth) {
  const unsigned fewer = sourceWidth / destinationWidth;
  const Average averages[2] = {Average(fewer), Average(fewer + 1)};
  Stepping stepping(sourceWidth, destinationWidth);
  for (unsigned pixel = 0; pixel < destinationWidth; ++pixel) {
    const unsigned count = stepping.advance();
    typename Average::Sum sums[channels] = {};
    for (unsigned i = 0; i < count; ++i, source += channels) {
      for (unsigned c = 0; c < channels; ++c) sums[c] += source[c];
    }
    for (unsigned c = 0; c < channels; ++c) *destination++ = averages[count - fewer](sums[c]);
  }
}

// Every source pixel spans a number of destination pixels, which run in a straight line to the next source pixel.
template <unsigned channels, typename Average>
void enlargeRow(uint8_t* destination, const uint8_t* source, unsigned destinationWidth, unsigned sourceWidth) {
  using Sum = typename Average::Sum;
  const unsigned fewer = destinationWidth / sourceWidth;
  const Average averages[2] = {Average(fewer), Average(fewer + 1)};
  const unsigned copies = headStart(fewer, destinationWidth, 2);
  for (unsigned i = 0; i < copies; ++i, destination += channels) memcpy(destination, source, channels);

  unsigned left = destinationWidth - copies;
  Stepping stepping(destinationWidth, sourceWidth);
  for (const uint8_t* last = source + size_t{sourceWidth - 1} * channels; left != 0; source += channels) {
    const unsigned span = stepping.advance();
    const Average& average = averages[span - fewer];
    const uint8_t* next = source < last ? source + channels : source;
    const unsigned count = std::min(span, left);
    left -= count;
    memcpy(destination, source, channels);
    destination += channels;
    // Sums of `span` bytes: the line's height, times the span.
    Sum sums[channels];
    for (unsigned c = 0; c < channels; ++c) sums[c] = Sum{source[c]} * span;
    for (unsigned i = 1; i < count; ++i) {
      for (unsigned c = 0; c < channels; ++c) {
        sums[c] += next[c];
        sums[c] -= source[c];
        *destination++ = average(sums[c]);
      }
    }
  }
}

template <typename Average>
void blendBytes(uint8_t* destination, const uint8_t* from, const uint8_t* to, size_t bytes, unsigned step,
                unsigned span) {
  using Sum = typename Average::Sum;
  const Average average(span);
  const unsigned rest = span - step;
  for (size_t i = 0; i < bytes; ++i) destination[i] = average(Sum{from[i]} * rest + Sum{to[i]} * step);
}

template <typename Sum>
void addBytes(Sum* sums, const uint8_t* row, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) sums[i] = static_cast<Sum>(sums[i] + row[i]);
}

template <unsigned channels>
ResampleRowFunction rowFunction(bool enlarges, unsigned mostTerms) {
  if (mostTerms <= ReciprocalAverage::largestCount) {
    return enlarges ? enlargeRow<channels, ReciprocalAverage> : shrinkRow<channels, ReciprocalAverage>;
  }
  return enlarges ? enlargeRow<channels, PlainAverage> : shrinkRow<channels, PlainAverage>;
}

}  // namespace

ResampleRowFunction resampleRowFunction(unsigned channels, unsigned destinationWidth, unsigned sourceWidth) {
  const bool enlarges = destinationWidth >= sourceWidth;
  const unsigned mostTerms = (enlarges ? destinationWidth / sourceWidth : sourceWidth / destinationWidth) + 1;
  if (channels == 1) return rowFunction<1>(enlarges, mostTerms);
  if (mostTerms <= mostNarrowTerms) return enlarges ? enlargeTriplesSse2 : shrinkTriplesSse2;
  return rowFunction<3>(enlarges, mostTerms);
}

void blendRows(uint8_t* destination, const uint8_t* from, const uint8_t* to, size_t bytes, unsigned step,
               unsigned span) {
  if (span > ReciprocalAverage::largestCount) {
    blendBytes<PlainAverage>(destination, from, to, bytes, step, span);
    return;
  }
  const size_t done = span <= mostNarrowTerms ? blendBytesSse2(destination, from, to, bytes, step, span) : 0;
  blendBytes<ReciprocalAverage>(destination + done, from + done, to + done, bytes - done, step, span);
}

int RowSums::open(size_t bytes, unsigned mostRows) {
  bytes_ = bytes;
  if (mostRows <= mostNarrowTerms) {
    narrow_ = OsBlock<uint16_t>::allocate(bytes);
    return narrow_ ? KSUCCESS : KERR_NO_MEMORY;
  }
  wide_ = OsBlock<uint64_t>::allocate(bytes);
  return wide_ ? KSUCCESS : KERR_NO_MEMORY;
}

void RowSums::clear() {
  if (narrow_) {
    memset(narrow_.get(), 0, bytes_ * sizeof(uint16_t));
  } else {
    memset(wide_.get(), 0, bytes_ * sizeof(uint64_t));
  }
}

void RowSums::add(const uint8_t* row) {
  if (narrow_) {
    addBytes(narrow_.get(), row, bytes_);
  } else {
    addBytes(wide_.get(), row, bytes_);
  }
}

void RowSums::average(uint8_t* destination, unsigned count) const {
  if (narrow_) {
    const size_t done = averageSumsSse2(destination, narrow_.get(), bytes_, count);
    for (size_t i = done; i < bytes_; ++i) destination[i] = static_cast<uint8_t>(narrow_[i] / count);
  } else {
    for (size_t i = 0; i < bytes_; ++i) destination[i] = static_cast<uint8_t>(wide_[i] / count);
  }
}

}  // namespace zavo
