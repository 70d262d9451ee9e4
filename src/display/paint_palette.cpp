// The palette to select and realise before a bitmap is painted.
#include <zavo.h>

#include "color/palettes.h"
#include "core/settings.h"
#include "core/status.h"
#include "display/paint_adjust.h"
#include "display/paint_mode.h"

namespace zavo {
namespace {

HPALETTE ditherTargetPalette(int deviceBits, uint32_t displayMode) {
  if ((displayMode & PAINT_CUBE_PALETTE) != 0 && deviceBits == 8) return Zv_CreatePalette(cubePalette(), 256);
  return Zv_CreateFixedPalette(deviceBits);  // none for a device of more than 8 bits
}

HPALETTE grayPalette(const ThreadSettings& settings) {
  RGBQUAD grays[256];
  for (unsigned i = 0; i < 256; ++i) {
    const auto level = static_cast<uint8_t>(i);
    grays[i] = adjusted(settings, {level, level, level, 0});
  }
  return Zv_CreatePalette(grays, 256);
}

HPALETTE ownPalette(const BitmapHandle& bitmap, const ThreadSettings& settings) {
  if (bitmap.BitsPerPixel > 8) return nullptr;
  RGBQUAD colors[256];
  const unsigned count = readPalette(bitmap, colors);
  if (count == 0) return nullptr;
  if (settings.paintAdjustActive != 0) {
    for (unsigned i = 0; i < count; ++i) colors[i] = adjusted(settings, colors[i]);
  }
  return Zv_CreatePalette(colors, count);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

HPALETTE ZAVO_CALL Zv_CreatePaintPalette(HDC dc, BitmapHandle* bitmap) {
  if (dc == nullptr || bitmap == nullptr) return nullptr;
  const ThreadSettings& settings = currentSettings();
  const int deviceBits = deviceDepth(dc);
  switch (paintModeOf(*bitmap, deviceBits, settings.displayMode)) {
    case PaintMode::dithered:
      return ditherTargetPalette(deviceBits, settings.displayMode);
    case PaintMode::gray:
    case PaintMode::grayInverted:
      return grayPalette(settings);
    default:
      return ownPalette(*bitmap, settings);
  }
}
