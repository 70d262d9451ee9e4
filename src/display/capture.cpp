// Capturing a rectangle of a device context into a bitmap.
#include <zavo.h>

#include <cstdint>

#include "core/owners.h"

using namespace zavo;

int ZAVO_CALL Zv_ScreenCaptureBitmap(HDC dc, BitmapHandle* bitmap, const RECT* rect) {
  if (bitmap == nullptr || rect == nullptr) return KERR_BAD_PARAMETER;
  const int64_t width = int64_t{rect->right} - rect->left;
  const int64_t signedHeight = int64_t{rect->bottom} - rect->top;
  const int64_t height = signedHeight < 0 ? -signedHeight : signedHeight;
  if (width < 1 || height < 1) return KERR_BAD_PARAMETER;
  if (width > INT32_MAX || height > INT32_MAX) return KERR_NO_MEMORY;

  BitmapObject captured;
  {
    const MemoryDC memory(CreateCompatibleDC(dc));
    if (!memory) return KERR_BAD_PARAMETER;
    captured.reset(CreateCompatibleBitmap(dc, static_cast<int>(width), static_cast<int>(height)));
    if (!captured) return KERR_NO_MEMORY;
    const Selection selected(memory.get(), captured.get());
    // Downwards from the top as given, also for a rectangle that is upside down.
    BitBlt(memory.get(), 0, 0, static_cast<int>(width), static_cast<int>(height), dc, rect->left, rect->top, SRCCOPY);
  }
  PaletteObject palette(Zv_CreateSystemPalette());
  const int status = Zv_ChangeFromDDB(dc, bitmap, captured.get(), palette.get());
  if (status == KSUCCESS) {
    (void)captured.release();
    (void)palette.release();
  }
  return status;
}
