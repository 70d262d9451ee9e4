// The bits of a stored row that no pixel uses.
#pragma once

#include <cstdint>
#include <cstring>

#include "core/sizes.h"

namespace zavo {

// Zeroes what lies between the last pixel of a stored row and the row's end.
inline void clearRowPadding(uint8_t* row, unsigned width, unsigned bitsPerPixel) {
  const auto used = static_cast<size_t>(packedBytesFor(width, bitsPerPixel));
  const auto usedBits = static_cast<unsigned>(uint64_t{width} * bitsPerPixel % 8);
  if (usedBits != 0) row[used - 1] = static_cast<uint8_t>(row[used - 1] & 0xFF00u >> usedBits);
  memset(row + used, 0, static_cast<size_t>(rowBytesFor(width, bitsPerPixel)) - used);
}

}  // namespace zavo
