// The nearest palette entry for all pixels of a picture, with the answers of nearestIndex.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/palettes.h"
#include "core/memory.h"

namespace zavo {

// Colours are sorted into cells of 8 x 8 x 8 by their 15-bit key. Which entries can be nearest to a colour of a cell is
// found out when the first one comes: often a single entry, else a short list.
class ColorCells {
 public:
  // Takes over a palette of 1 to 256 entries. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open(const RGBQUAD* palette, unsigned count);

  // The index nearest to a colour of channels 0 to 255.
  [[nodiscard]] uint8_t search(unsigned red, unsigned green, unsigned blue) {
    const uint32_t entry = cells_[colorKey(red, green, blue)] - 1;
    return entry < 256 ? static_cast<uint8_t>(entry) : searchCell(red, green, blue);
  }

 private:
  uint8_t searchCell(unsigned red, unsigned green, unsigned blue);
  [[nodiscard]] const RGBQUAD& rivalOf(unsigned key) const;
  uint32_t learn(unsigned key);

  static constexpr unsigned maxEntries = 256;

  RGBQUAD palette_[maxEntries];  // the last entry repeated up to a multiple of four
  unsigned count_ = 0;
  OsBlock<uint32_t> cells_;      // 0 unknown, index + 1, or where the candidates are
  OsBlock<RGBQUAD> candidates_;  // in groups of four, in the palette's order, with the index as reserved byte
  unsigned groupsTaken_ = 0;
};

}  // namespace zavo
