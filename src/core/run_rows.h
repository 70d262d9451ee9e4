// Rows of run-length storage, translated to and from packed bits on the fly.
#pragma once

#include <zavo.h>

#include <cstdint>

namespace zavo {

// What readRow and writeRow do for run-length storage. A read longer than the rest of the row fills the following
// bytes with the same row again; a write goes on in the following rows. Both differ on purpose.
int readRunRows(const BitmapHandle& bitmap, uint8_t* buffer, unsigned row, unsigned column, unsigned bytes);
int writeRunRows(BitmapHandle& bitmap, const uint8_t* buffer, unsigned row, unsigned column, unsigned bytes);

}  // namespace zavo
