// How a bitmap is painted on a device: the decision that depths, palettes and display-mode flags lead to.
#pragma once

#include <zavo.h>

#include <cstdint>

namespace zavo {

enum class PaintMode : int {
  asStored = 0,            // rows are handed over at the bitmap's own depth
  widened = 1,             // rows go to a depth the graphics interface takes
  dithered = 2,            // rows are dithered to the device's depth, at most 8 bits
  gray = 3,                // 1 bit: grey levels by coverage
  grayInverted = 4,        // the same for a descending grey palette
  secondGray = 5,          // 1 bit: grey levels by coverage, only when stretched
  secondGrayInverted = 6,  // the same for a descending grey palette
};

// The device's depth. Metafiles count as 24.
[[nodiscard]] int deviceBitsPerPixel(HDC dc);

// The device's depth, brought down to 1, 4, 8 or 24 bits.
[[nodiscard]] int deviceDepth(HDC dc);

[[nodiscard]] PaintMode paintModeOf(BitmapHandle& bitmap, int deviceBits, uint32_t displayMode);

}  // namespace zavo
