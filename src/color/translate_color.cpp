// Carrying a colour value from one bitmap to another.
#include <zavo.h>

#include <cstdint>

#include "color/palettes.h"
#include "core/status.h"

namespace zavo {
namespace {

constexpr COLORREF indexMark = 0x01000000;
constexpr COLORREF topByte = 0xFF000000;

// The number of colours of a bitmap of up to 8 bits, 0 for one without palette or of more bits.
unsigned colorsOf(const BitmapHandle& bitmap, RGBQUAD palette[256]) {
  return bitmap.BitsPerPixel <= 8 ? readPalette(bitmap, palette) : 0;
}

COLORREF translate(const BitmapHandle& destination, const BitmapHandle& source, COLORREF color) {
  RGBQUAD sourcePalette[256];
  const unsigned index = color & ~topByte;
  if (index >= colorsOf(source, sourcePalette)) return color;
  const RGBQUAD& rgb = sourcePalette[index];
  if (destination.BitsPerPixel > 8) return RGB(rgb.rgbRed, rgb.rgbGreen, rgb.rgbBlue);

  RGBQUAD palette[256];
  const unsigned count = colorsOf(destination, palette);
  if (count == 0) return color;
  // A palette may hold a colour twice; the transparent index of a copied frame must not slip to its twin.
  if (index < count && sameColor(palette[index], rgb)) return color;
  return indexMark | nearestIndex(palette, count, rgb.rgbRed, rgb.rgbGreen, rgb.rgbBlue);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

COLORREF ZAVO_CALL Zv_TranslateBitmapColor(BitmapHandle* destination, BitmapHandle* source, COLORREF color) {
  if (!isAllocated(destination) || !isAllocated(source)) return color;
  if ((color & topByte) != indexMark) return color;
  return translate(*destination, *source, color);
}
