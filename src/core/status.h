// Small questions every exported function asks first.
#pragma once

#include <zavo.h>

namespace zavo {

// The handle has pixel storage.
[[nodiscard]] inline bool isAllocated(const BitmapHandle* bitmap) {
  return bitmap != nullptr && (bitmap->Flags & BMF_ALLOCATED) != 0;
}

[[nodiscard]] inline bool isRunLength(const BitmapHandle& bitmap) {
  return (bitmap.Flags & BMF_RUNLENGTH) != 0;
}

[[nodiscard]] constexpr bool isSupportedDepth(int bitsPerPixel) {
  return (bitsPerPixel >= 1 && bitsPerPixel <= 8) || bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32;
}

}  // namespace zavo
