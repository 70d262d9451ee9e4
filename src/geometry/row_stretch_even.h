// The row stretch for the ratios that occur most, without a table.
#pragma once

#include "geometry/row_stretch.h"

namespace zavo {

// The worker that takes every second or every fourth source pixel, or each twice, where there is a faster one for
// that: it needs no table of sources. Null for other ratios and depths. Rows of depths below 8 begin at a byte; an
// enlarged row begins with the first of a pair.
[[nodiscard]] RowStretch::Worker evenStretchWorker(unsigned destinationWidth, unsigned sourceWidth, int bitsPerPixel);

// Workers of 24 bits; need SSSE3.
void halveTriplesSsse3(uint8_t* destination, const uint8_t* source, const uint32_t* sources,
                       const RowStretch::Counts& counts);
void doubleTriplesSsse3(uint8_t* destination, const uint8_t* source, const uint32_t* sources,
                        const RowStretch::Counts& counts);

}  // namespace zavo
