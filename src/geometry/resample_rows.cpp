// The row workers of resampling.
#include "geometry/resample_rows.h"

#include <algorithm>
#include <cstring>

#include "geometry/stepping.h"

namespace zavo {
namespace {

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

template <unsigned channels>
ResampleRowFunction rowFunction(unsigned destinationWidth, unsigned sourceWidth) {
  if (sourceWidth > destinationWidth) {
    const unsigned most = sourceWidth / destinationWidth + 1;
    return most <= ReciprocalAverage::largestCount ? shrinkRow<channels, ReciprocalAverage>
                                                   : shrinkRow<channels, PlainAverage>;
  }
  const unsigned most = destinationWidth / sourceWidth + 1;
  return most <= ReciprocalAverage::largestCount ? enlargeRow<channels, ReciprocalAverage>
                                                 : enlargeRow<channels, PlainAverage>;
}

}  // namespace

ResampleRowFunction resampleRowFunction(unsigned channels, unsigned destinationWidth, unsigned sourceWidth) {
  return channels == 1 ? rowFunction<1>(destinationWidth, sourceWidth) : rowFunction<3>(destinationWidth, sourceWidth);
}

void blendRows(uint8_t* destination, const uint8_t* from, const uint8_t* to, size_t bytes, unsigned step,
               unsigned span) {
  if (span <= ReciprocalAverage::largestCount) {
    blendBytes<ReciprocalAverage>(destination, from, to, bytes, step, span);
  } else {
    blendBytes<PlainAverage>(destination, from, to, bytes, step, span);
  }
}

}  // namespace zavo
