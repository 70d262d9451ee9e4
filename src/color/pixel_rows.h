// Rows of colour pixels from one size to another. Plain functions, and faster ones for processors with SSSE3 that
// give the same bytes.
#pragma once

#include <cstdint>

namespace zavo {

enum class PixelSize { gray8, bits16, bits24, bits32 };

// Converts `width` pixels. The destination may be the source: then rows that grow are walked from their end. Apart
// from that the two do not overlap.
using PixelRowFunction = void (*)(uint8_t* destination, const uint8_t* source, unsigned width);

// Functions by source size, destination size, and whether the first and third colour bytes change places. Grey
// counts as blue first: a red-first source is swapped on the way to it. Null where there is nothing to do or where
// the table has no function of its own.
struct PixelRowTable {
  PixelRowFunction rows[4][4][2];

  [[nodiscard]] constexpr PixelRowFunction find(PixelSize source, PixelSize destination, bool swap) const {
    return rows[static_cast<int>(source)][static_cast<int>(destination)][swap ? 1 : 0];
  }
};

extern const PixelRowTable plainPixelRows;  // all there are
extern const PixelRowTable ssse3PixelRows;  // only where they gain; need SSSE3

}  // namespace zavo
