// Ordered thresholds: the two 8 x 8 matrices of the library, and turning a row of levels into bits with them.
#pragma once

#include <cstdint>

namespace zavo {

// Rows of 8 thresholds, listed top to bottom.
using ThresholdMatrix = uint8_t[8][8];

// Spreads dots as far apart as can be. Five entries differ from the regular recursive pattern (232 stands twice, 236
// where 240 would be); existing pictures rest on these values.
extern const ThresholdMatrix dispersedMatrix;
// Lets dots grow from centres, as printed halftones do.
extern const ThresholdMatrix clusteredMatrix;

// Writes bit 1 for every level strictly above its threshold; pixel x is held against thresholds[x & 7]. Bits are packed
// most significant first, (count + 7) / 8 bytes are written, bits after the last pixel are 0.
void thresholdRow(uint8_t* packed, const uint8_t* levels, unsigned count, const uint8_t thresholds[8]);

}  // namespace zavo
