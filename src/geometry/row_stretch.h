// Stretching rows sideways to another width, by taking the nearest source pixel.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/memory.h"
#include "core/status.h"

namespace zavo {

// Which pixels of the stretched row are made, and where the source row lies that they are made from.
struct StretchSpan {
  unsigned destinationWidth;  // of the whole stretched row, at least 1
  unsigned sourceWidth;       // of the whole source row, at least 1
  unsigned first;             // the stretched pixels made are first to first + count - 1
  unsigned count;
  int sourceShift;  // where source pixel 0 lies in the memory handed to stretch(); negative when that holds only a
                    // later part of the row
};

// A stretch from one width to another, planned once and then run row after row: stretched pixel k is source pixel
// floor(k * source width / destination width).
class RowStretch {
 public:
  // Plans whole rows. `bitsPerPixel` is a supported depth. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int plan(unsigned destinationWidth, unsigned sourceWidth, int bitsPerPixel) {
    return plan(StretchSpan{destinationWidth, sourceWidth, 0, destinationWidth, 0}, bitsPerPixel);
  }
  // Plans a part of each row. The first pixel made is the first of the destination memory.
  [[nodiscard]] int plan(const StretchSpan& span, int bitsPerPixel);

  // Makes one row: whole bytes up to that of the last pixel, whose unused bits become zero. The two must not overlap.
  void stretch(uint8_t* destination, const uint8_t* source) const {
    worker_(destination, source + sourceStart_, sources_.get(), counts_);
  }

  struct Counts {
    unsigned pixels;
    unsigned loose;  // leading pixels that are followed by another in the source and in the destination, so that
                     // a byte past their end may be read and written
  };
  // `sources` holds, for each pixel made, the source pixel (depths below 8) or its byte offset (8 bits and up).
  using Worker = void (*)(uint8_t* destination, const uint8_t* source, const uint32_t* sources, const Counts& counts);

 private:
  Worker worker_ = nullptr;
  size_t sourceStart_ = 0;  // bytes to skip in the source; sources_ counts from there
  OsBlock<uint32_t> sources_;
  Counts counts_{};
};

// Makes one row in the memory of its source row, without a plan. There must be room for the longer of the two; as with
// stretch(), the unused bits of the last byte become zero where the width changes.
void stretchInPlace(uint8_t* row, unsigned destinationWidth, unsigned sourceWidth, int bitsPerPixel);

}  // namespace zavo
