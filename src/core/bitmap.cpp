// The bitmap handle: describing an image, creating it in one call, freeing it; and the version record.
#include <zavo.h>

#include <cstring>

#include "core/region_services.h"
#include "core/settings.h"
#include "core/sizes.h"
#include "core/status.h"
#include "core/storage.h"

namespace zavo {
namespace {

constexpr int fallbackResolution = 150;

#ifndef _WIN64
static_assert(sizeof(BitmapHandle) == 26 * 4, "the handle is 26 words");
#endif
static_assert(sizeof(VersionRecord) == 104);

// Copies a text into a field that is zero beforehand; the field keeps at least one zero at its end.
template <size_t fieldSize, size_t textSize>
void putText(char (&field)[fieldSize], const char (&text)[textSize]) {
  static_assert(textSize <= fieldSize);
  memcpy(field, text, textSize);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_InitBitmap(BitmapHandle* bitmap, int width, int height, int bitsPerPixel) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  const ThreadSettings& settings = currentSettings();
  *bitmap = {};
  if (!isSupportedDepth(bitsPerPixel)) return KERR_BAD_BPP;

  bitmap->Width = width;
  bitmap->Height = height;
  bitmap->BitsPerPixel = bitsPerPixel;
  // Sizes wrap here; allocation refuses an image whose true size they do not hold.
  const auto bits = static_cast<unsigned>(bitsPerPixel);
  bitmap->BytesPerLine = ((bits * static_cast<unsigned>(width) + 31) & ~31u) / 8;
  bitmap->DataSize = static_cast<unsigned>(height) * bitmap->BytesPerLine;
  bitmap->ViewPerspective = VIEW_BOTTOM_UP;
  bitmap->DitheringMethod = static_cast<int>(settings.defaultDithering);
  if (bitsPerPixel <= 8) {
    bitmap->ColorCount = 1u << bits;
  } else {
    bitmap->ColorOrder = ORDER_BLUE_FIRST;
  }
  bitmap->XResolution = settings.defaultXResolution > 0 ? settings.defaultXResolution : fallbackResolution;
  bitmap->YResolution = settings.defaultYResolution > 0 ? settings.defaultYResolution : fallbackResolution;
  return KSUCCESS;
}

int ZAVO_CALL Zv_CreateBitmap(BitmapHandle* bitmap, int memoryType, int width, int height, int bitsPerPixel,
                              int colorOrder, const RGBQUAD* palette, int viewPerspective) {
  if (bitmap == nullptr) return KERR_BAD_PARAMETER;
  const bool gray = bitsPerPixel == 0;
  if (const int status = Zv_InitBitmap(bitmap, width, height, gray ? 8 : bitsPerPixel); status != KSUCCESS) {
    return status;
  }
  if (const int status = Zv_AllocateBitmap(bitmap, memoryType); status != KSUCCESS) return status;
  // An image whose palette cannot be made goes without one.
  if (bitmap->BitsPerPixel >= 16) {
    bitmap->ColorOrder = colorOrder;
  } else if (gray) {
    bitmap->Palette = Zv_CreateGrayPalette(8);
  } else if (palette != nullptr) {
    bitmap->Palette = Zv_CreatePalette(palette, bitmap->ColorCount);
  } else {
    Zv_CreateBitmapFixedPalette(bitmap);
  }
  bitmap->ViewPerspective = viewPerspective;
  return KSUCCESS;
}

void ZAVO_CALL Zv_FreeBitmap(BitmapHandle* bitmap) {
  if (bitmap == nullptr) return;
  freeRegion(*bitmap);
  if (bitmap->Palette != nullptr) {
    DeleteObject(bitmap->Palette);
    bitmap->Palette = nullptr;
  }
  if (isAllocated(bitmap)) releaseStorage(*bitmap);
}

int ZAVO_CALL Zv_FreeImage(BitmapHandle* bitmap, int withAttachments) {
  if (!isAllocated(bitmap)) return KSUCCESS;
  if (withAttachments == 0) {
    bitmap->Palette = nullptr;
    bitmap->Region = nullptr;
  }
  Zv_FreeBitmap(bitmap);
  return KSUCCESS;
}

int ZAVO_CALL Zv_VersionInfo(VersionRecord* record) {
  if (record == nullptr) return KERR_BAD_PARAMETER;
  *record = {};
  putText(record->Product, "VANTRIXOS\xAE DLL for Win32");
  record->Major = 8;
  putText(record->BuildDate, "Nov 18 1997");
  putText(record->BuildTime, "11:18:37");
  return KSUCCESS;
}
