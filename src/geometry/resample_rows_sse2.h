// Vector forms of the row workers of resampling, for sums of up to 257 bytes, which fit in 16 bits. Same results as
// the plain ones.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zavo {

constexpr unsigned mostNarrowTerms = 257;

// Rows of 3-byte pixels: at most mostNarrowTerms source pixels for a destination pixel, or the other way round.
void shrinkTriplesSse2(uint8_t* destination, const uint8_t* source, unsigned destinationWidth, unsigned sourceWidth);
void enlargeTriplesSse2(uint8_t* destination, const uint8_t* source, unsigned destinationWidth, unsigned sourceWidth);

// These work on the first bytes, as many as there are whole vectors, and return how many. `span` and `count` are at
// most mostNarrowTerms.
size_t blendBytesSse2(uint8_t* destination, const uint8_t* from, const uint8_t* to, size_t bytes, unsigned step,
                      unsigned span);
size_t averageSumsSse2(uint8_t* destination, const uint16_t* sums, size_t bytes, unsigned count);

}  // namespace zavo
