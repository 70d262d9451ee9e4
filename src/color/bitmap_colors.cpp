// The colours of a bitmap: reading and replacing palette entries, and telling grey palettes.
#include <zavo.h>

#include <algorithm>

#include "color/palettes.h"
#include "core/status.h"

namespace zavo {
namespace {

enum GrayKind { notGray = 0, risingRamp = 1, fallingRamp = 2, otherGrays = 3 };

constexpr unsigned maxColors = 256;

GrayKind grayKind(const RGBQUAD* colors, unsigned count) {
  if (!std::all_of(colors, colors + count, isGray)) return notGray;
  // The rounded-down step makes even ramps of 8 and some other counts "other greys".
  const unsigned step = count > 1 ? 255 / (count - 1) : 0;
  const bool rising = colors[0].rgbRed == 0;
  auto expected = static_cast<uint8_t>(rising ? 0 : 255);
  for (unsigned i = 0; i < count; ++i) {
    if (colors[i].rgbRed != expected) return otherGrays;
    expected = static_cast<uint8_t>(rising ? expected + step : expected - step);
  }
  return rising ? risingRamp : fallingRamp;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_IsGrayScaleBitmap(const BitmapHandle* bitmap) {
  if (bitmap == nullptr || bitmap->BitsPerPixel > 8) return notGray;
  const unsigned count = bitmap->ColorCount;
  if (count == 0 || count > maxColors) return notGray;
  RGBQUAD colors[maxColors];
  if (readEntries(colors, bitmap->Palette, 0, count) < count) return notGray;
  return grayKind(colors, count);
}

int ZAVO_CALL Zv_GetBitmapColors(const BitmapHandle* bitmap, int first, unsigned count, RGBQUAD* colors) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  if (colors == nullptr || first < 0 || count == 0 || bitmap->BitsPerPixel > 8) return KERR_BAD_PARAMETER;
  if (static_cast<unsigned>(first) + uint64_t{count} > paletteSize(bitmap->Palette)) return KERR_BAD_PARAMETER;
  const unsigned read = readEntries(colors, bitmap->Palette, static_cast<unsigned>(first), count);
  return read == count ? KSUCCESS : KERR_BAD_PARAMETER;
}

int ZAVO_CALL Zv_PutBitmapColors(BitmapHandle* bitmap, int first, unsigned count, const RGBQUAD* colors) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (colors == nullptr || first < 0 || bitmap->BitsPerPixel > 8) return KERR_BAD_PARAMETER;
  const unsigned total = bitmap->ColorCount;
  if (static_cast<unsigned>(first) + uint64_t{count} > total || total > maxColors) return KERR_BAD_PARAMETER;

  RGBQUAD all[maxColors];
  readPalette(*bitmap, all);
  std::copy_n(colors, count, all + first);
  HPALETTE replacement = createPalette(all, total);
  if (replacement == nullptr) return KERR_NO_MEMORY;
  if (bitmap->Palette != nullptr) DeleteObject(bitmap->Palette);
  bitmap->Palette = replacement;
  return KSUCCESS;
}
