// Rows of one colour in every pixel format.
#include "color/color_row.h"

#include <algorithm>
#include <cstring>

#include "color/palettes.h"
#include "core/sizes.h"

namespace zavo {
namespace {

constexpr COLORREF colorBytes = 0x00FFFFFF;

// The graphics interface's own search, which decides ties otherwise than nearestIndex does.
uint32_t nearestPaletteIndex(const BitmapHandle& bitmap, COLORREF color) {
  if (bitmap.Palette != nullptr) {
    const UINT index = GetNearestPaletteIndex(bitmap.Palette, color & colorBytes);
    if (index != CLR_INVALID) return index;
  }
  return nearestIndex(fixedPalette(bitmap.BitsPerPixel), 1u << bitmap.BitsPerPixel, GetRValue(color), GetGValue(color),
                      GetBValue(color));
}

uint32_t indexOfColor(const BitmapHandle& bitmap, COLORREF color) {
  const uint32_t index = color >> 24 == 1 ? color : nearestPaletteIndex(bitmap, color);
  return index & ((1u << bitmap.BitsPerPixel) - 1);
}

// The pixel that stands for a colour value, lowest byte first in memory.
uint32_t pixelOfColor(const BitmapHandle& bitmap, COLORREF color) {
  if (bitmap.BitsPerPixel <= 8) return indexOfColor(bitmap, color);
  uint32_t first = GetRValue(color);
  uint32_t last = GetBValue(color);
  const uint32_t green = GetGValue(color);
  if (bitmap.ColorOrder == ORDER_BLUE_FIRST) std::swap(first, last);
  if (bitmap.BitsPerPixel == 16) return last >> 3 << 10 | green >> 3 << 5 | first >> 3;
  return last << 16 | green << 8 | first;
}

// A pattern that repeats after `length` bytes: 1, 2, 3 or 4 of them for whole-byte pixels, eight pixels below.
struct Pattern {
  uint8_t bytes[8];
  size_t length;
};

Pattern patternOf(unsigned bitsPerPixel, uint32_t pixel) {
  Pattern pattern{};
  if (bitsPerPixel >= 8) {
    pattern.length = bitsPerPixel / 8;
    for (size_t k = 0; k < pattern.length; ++k) pattern.bytes[k] = static_cast<uint8_t>(pixel >> 8 * k);
    return pattern;
  }
  pattern.length = bitsPerPixel;
  uint64_t bits = 0;
  for (unsigned k = 0; k < 8; ++k) bits = bits << bitsPerPixel | pixel;
  for (size_t k = 0; k < pattern.length; ++k) {
    pattern.bytes[k] = static_cast<uint8_t>(bits >> 8 * (pattern.length - 1 - k));
  }
  return pattern;
}

void repeat(uint8_t* row, const Pattern& pattern, size_t bytes) {
  if (pattern.length == 1) {
    memset(row, pattern.bytes[0], bytes);
    return;
  }
  size_t filled = std::min(pattern.length, bytes);
  memcpy(row, pattern.bytes, filled);
  while (filled < bytes) {
    const size_t copied = std::min(filled, bytes - filled);
    memcpy(row + filled, row, copied);
    filled += copied;
  }
}

}  // namespace

void fillColorRow(uint8_t* row, const BitmapHandle& bitmap, COLORREF color, unsigned count) {
  if (count == 0) return;
  const auto bits = static_cast<unsigned>(bitmap.BitsPerPixel);
  const auto bytes = static_cast<size_t>(packedBytesFor(count, bits));
  const auto usedBits = static_cast<unsigned>(uint64_t{count} * bits % 8);  // of the last byte; 0 for all
  uint8_t& lastByte = row[bytes - 1];
  const bool keepsTail = usedBits != 0 && 8 % bits != 0;
  const uint8_t tailMask = keepsTail ? static_cast<uint8_t>(0xFF >> usedBits) : uint8_t{0};
  const auto tail = static_cast<uint8_t>(lastByte & tailMask);
  repeat(row, patternOf(bits, pixelOfColor(bitmap, color)), bytes);
  lastByte = static_cast<uint8_t>((lastByte & ~tailMask) | tail);
}

}  // namespace zavo
