// The paint-mode decision.
#include "display/paint_mode.h"

#include "color/palettes.h"
#include "core/settings.h"
#include "core/status.h"

namespace zavo {
namespace {

// What the grey test of a 1-bit palette leads to; `fallback` for a palette that is not an even ramp.
PaintMode byGrayTest(BitmapHandle& bitmap, PaintMode ascending, PaintMode descending, PaintMode fallback) {
  switch (Zv_IsGrayScaleBitmap(&bitmap)) {
    case 1:
      return ascending;
    case 2:
      return descending;
    default:
      return fallback;
  }
}

PaintMode modeOf1Bit(BitmapHandle& bitmap, int deviceBits, uint32_t flags) {
  constexpr uint32_t toFixed = PAINT_DITHER | PAINT_FIXED_PALETTE;
  const bool fixed = (flags & toFixed) == toFixed;
  const PaintMode plain = fixed ? PaintMode::dithered : PaintMode::asStored;
  if ((flags & PAINT_GRAY_1BIT) != 0 && deviceBits >= 4) {
    return byGrayTest(bitmap, PaintMode::gray, PaintMode::grayInverted, plain);
  }
  if ((flags & PAINT_GRAY_1BIT_ALT) != 0) {
    return byGrayTest(bitmap, PaintMode::secondGray, PaintMode::secondGrayInverted, plain);
  }
  return fixed && deviceBits == 8 ? PaintMode::dithered : PaintMode::asStored;
}

// The first colours of the bitmap's palette, as many as it has and at most as many as the fixed palette of its depth,
// are those of that palette.
bool hasFixedPalette(const BitmapHandle& bitmap) {
  RGBQUAD palette[256];
  const unsigned count = readPalette(bitmap, palette);
  const RGBQUAD* fixed = fixedPalette(bitmap.BitsPerPixel);
  const unsigned limit = 1u << bitmap.BitsPerPixel;
  for (unsigned i = 0; i < count && i < limit; ++i) {
    if (!sameColor(palette[i], fixed[i])) return false;
  }
  return true;
}

// 4 and 8 bits: an image at the device's own depth is dithered only when its colours are not the fixed ones.
PaintMode modeOfDeviceDepth(const BitmapHandle& bitmap, int deviceBits, bool onFixedPalette) {
  const int bits = bitmap.BitsPerPixel;
  const bool byPalette = deviceBits == bits && (onFixedPalette || bits == 4);
  if (byPalette) return hasFixedPalette(bitmap) ? PaintMode::asStored : PaintMode::dithered;
  const bool dither = onFixedPalette ? deviceBits <= 8 : deviceBits < bits;
  return dither ? PaintMode::dithered : PaintMode::asStored;
}

}  // namespace

int deviceBitsPerPixel(HDC dc) {
  if (GetDeviceCaps(dc, TECHNOLOGY) == DT_METAFILE) return 24;
  return GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES);
}

int deviceDepth(HDC dc) {
  const int bits = deviceBitsPerPixel(dc);
  if (bits < 4) return 1;
  if (bits < 8) return 4;
  return bits < 16 ? 8 : 24;
}

PaintMode paintModeOf(BitmapHandle& bitmap, int deviceBits, uint32_t displayMode) {
  const bool dither = (displayMode & PAINT_DITHER) != 0;
  const bool onFixedPalette = (displayMode & PAINT_FIXED_PALETTE) != 0;
  switch (bitmap.BitsPerPixel) {
    case 1:
      return modeOf1Bit(bitmap, deviceBits, displayMode);
    case 2:
    case 3:
    case 5:
    case 6:
    case 7:
      return dither && deviceBits <= (onFixedPalette ? 8 : 7) ? PaintMode::dithered : PaintMode::widened;
    case 4:
    case 8:
      return dither ? modeOfDeviceDepth(bitmap, deviceBits, onFixedPalette) : PaintMode::asStored;
    case 16:
    case 32:
      return dither && deviceBits <= 8 ? PaintMode::dithered : PaintMode::widened;
    case 24:
      return dither && deviceBits <= 8 ? PaintMode::dithered : PaintMode::asStored;
    default:
      return PaintMode::asStored;
  }
}

}  // namespace zavo

using namespace zavo;

void ZAVO_CALL Zv_GetDitherFlags(HDC dc, BitmapHandle* bitmap, int* deviceBits, int* paintMode) {
  const int bits = deviceDepth(dc);
  if (deviceBits != nullptr) *deviceBits = bits;
  if (paintMode == nullptr) return;
  *paintMode = bitmap != nullptr ? static_cast<int>(paintModeOf(*bitmap, bits, currentSettings().displayMode)) : 0;
}
