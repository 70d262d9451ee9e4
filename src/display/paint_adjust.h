// Brightness, contrast and gamma of painting, as one table from input to output levels.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/settings.h"

namespace zavo {

// A colour with every channel looked up in the table; its fourth byte stays.
[[nodiscard]] inline RGBQUAD adjusted(const ThreadSettings& settings, RGBQUAD color) {
  const uint8_t* table = settings.paintAdjustTable;
  return {table[color.rgbBlue], table[color.rgbGreen], table[color.rgbRed], color.rgbReserved};
}

}  // namespace zavo
