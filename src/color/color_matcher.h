// The nearest palette entry for many colours in a row: a small cache before the search, or the application's match
// table instead of it.
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

  // What nearestIndex gives.
  [[nodiscard]] uint8_t search(unsigned red, unsigned green, unsigned blue) {
    const uint32_t color = red << 16 | green << 8 | blue;
    uint32_t& known = known_[color * 0x9E3779B1u >> (32 - slotBits)];
    if ((known & 0xFFFFFF) != color) known = color | nearestIndex(palette_, count_, red, green, blue) << 24;
    return static_cast<uint8_t>(known >> 24);
  }

  // By the table, which must be there; a missing entry, or one made for a larger palette, is searched for.
  [[nodiscard]] uint8_t lookUp(unsigned red, unsigned green, unsigned blue) {
    const uint32_t entry = table_[colorKey(red, green, blue)] - 1;
    return entry < count_ ? static_cast<uint8_t>(entry) : search(red, green, blue);
  }

 private:
  static constexpr unsigned slotBits = 9;

  const RGBQUAD* palette_;
  unsigned count_;
  const uint32_t* table_;
  uint32_t known_[1u << slotBits];  // colours in the low 24 bits, their indexes above
};

}  // namespace zavo
