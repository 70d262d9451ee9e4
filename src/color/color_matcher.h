// The nearest palette entry for many colours in a row, with the answers of nearestIndex: a cache of answers before a
// search that knows where to look, or the application's match table instead of both.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/palettes.h"

namespace zavo {

class ColorMatcher {
 public:
  // The palette, 1 to 256 entries, and the table, if any, must outlive the matcher.
  void prepare(const RGBQUAD* palette, unsigned count, const uint32_t* table);

  [[nodiscard]] bool hasTable() const { return table_ != nullptr; }

  // The index nearest to a colour of channels 0 to 255.
  [[nodiscard]] uint8_t search(unsigned red, unsigned green, unsigned blue) {
    const uint32_t color = red << 16 | green << 8 | blue;
    const uint32_t known = known_[color * 0x9E3779B1u >> (32 - slotBits)];
    return (known & 0xFFFFFF) == color ? static_cast<uint8_t>(known >> 24) : learn(color);
  }

  // By the table, which must be there; a missing entry, or one made for a larger palette, is searched for.
  [[nodiscard]] uint8_t lookUp(unsigned red, unsigned green, unsigned blue) {
    const uint32_t entry = table_[colorKey(red, green, blue)] - 1;
    return entry < count_ ? static_cast<uint8_t>(entry) : search(red, green, blue);
  }

 private:
  static constexpr unsigned slotBits = 9;
  static constexpr unsigned maxEntries = 256;

  uint8_t learn(uint32_t color);
  [[nodiscard]] uint8_t find(unsigned red, unsigned green, unsigned blue, unsigned startIndex) const;

  const RGBQUAD* palette_;
  const uint32_t* table_;
  unsigned count_;
  uint32_t known_[1u << slotBits];  // colours in the low 24 bits, their indexes above
  uint8_t near_[512];               // by the top 3 bits of each channel: the index found last; where a search starts

  // The palette by rising green, the index in place of the reserved byte, the last entry repeated up to a multiple
  // of 4; and where the entries of each green and above begin.
  RGBQUAD byGreen_[maxEntries + 3];
  uint16_t greenStart_[257];
};

}  // namespace zavo
