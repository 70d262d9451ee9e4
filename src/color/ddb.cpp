// Exchange with the device-dependent bitmaps of the graphics interface. A bitmap becomes one by being painted into it;
// the way back goes through a packed DIB.
#include <zavo.h>

#include "color/dib_layout.h"
#include "core/owners.h"
#include "core/perspective.h"
#include "core/sizes.h"
#include "core/status.h"

namespace zavo {
namespace {

HBITMAP paintedBitmap(HDC dc, BitmapHandle& bitmap) {
  const ImageSize size = sizeInFrame(bitmap, VIEW_UPRIGHT);
  const MemoryDC memory(CreateCompatibleDC(dc));
  BitmapObject painted(CreateCompatibleBitmap(dc, size.width, size.height));
  if (!memory || !painted) return nullptr;
  // With real colours, dithered where the device needs it, whatever the thread has set.
  const DisplayModeScope mode(PAINT_INDEX_COLORS | PAINT_DITHER, PAINT_DITHER);
  const PaletteObject palette(Zv_CreatePaintPalette(dc, &bitmap));
  const Selection selected(memory.get(), painted.get());
  const PaletteSelection colors(memory.get(), palette.get());
  const RECT all = {0, 0, size.width, size.height};
  const int status = Zv_PaintDC(memory.get(), &bitmap, nullptr, nullptr, &all, nullptr, SRCCOPY);
  return status == KSUCCESS ? painted.release() : nullptr;
}

// The device-dependent bitmap's rows as a packed DIB. KSUCCESS, KERR_NO_MEMORY, or KERR_BAD_PARAMETER for rows that
// the device does not give.
int packedDib(GlobalMemory& dib, HDC dc, HBITMAP source, const BITMAP& described, HPALETTE palette) {
  DibHeader header = {};
  header.headerBytes = infoHeaderBytes;
  header.width = described.bmWidth;
  header.height = described.bmHeight;
  header.planes = 1;
  header.bitsPerPixel = dibDepthFor(unsigned{described.bmPlanes} * described.bmBitsPixel);
  const uint64_t bytes = header.rowsOffset() + header.imageBytes();
  if (bytes > UINT32_MAX) return KERR_NO_MEMORY;
  dib.reset(GlobalAlloc(GMEM_MOVEABLE | GMEM_DDESHARE | GMEM_ZEROINIT, static_cast<SIZE_T>(bytes)));
  if (!dib) return KERR_NO_MEMORY;
  const GlobalLockOf<uint8_t> memory(dib.get());
  if (!memory) return KERR_NO_MEMORY;
  writeDibHeader(memory.get(), header);
  uint8_t* pixels = memory.get() + static_cast<size_t>(header.rowsOffset());
  const PaletteSelection selected(dc, palette);
  const int rows = GetDIBits(dc, source, 0, static_cast<UINT>(described.bmHeight), pixels,
                             reinterpret_cast<BITMAPINFO*>(memory.get()), DIB_RGB_COLORS);
  return rows == described.bmHeight ? KSUCCESS : KERR_BAD_PARAMETER;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

HBITMAP ZAVO_CALL Zv_ConvertToDDB(HDC dc, BitmapHandle* bitmap) {
  if (!isAllocated(bitmap)) return nullptr;
  if (dc != nullptr) return paintedBitmap(dc, *bitmap);
  const ScreenDC screen;
  return screen ? paintedBitmap(screen.get(), *bitmap) : nullptr;
}

HBITMAP ZAVO_CALL Zv_ChangeToDDB(HDC dc, BitmapHandle* bitmap) {
  HBITMAP made = Zv_ConvertToDDB(dc, bitmap);
  if (made != nullptr) Zv_FreeBitmap(bitmap);
  return made;
}

int ZAVO_CALL Zv_ConvertFromDDB(HDC dc, BitmapHandle* bitmap, HBITMAP source, HPALETTE palette) {
  BITMAP described;
  if (bitmap == nullptr || source == nullptr || GetObjectType(source) != OBJ_BITMAP ||
      GetObjectA(source, sizeof described, &described) == 0) {
    return KERR_BAD_PARAMETER;
  }
  GlobalMemory dib;
  if (const int status = packedDib(dib, dc, source, described, palette); status != KSUCCESS) return status;
  const int status = Zv_ChangeFromDIB(bitmap, dib.get());
  if (status == KSUCCESS) (void)dib.release();
  return status;
}

int ZAVO_CALL Zv_ChangeFromDDB(HDC dc, BitmapHandle* bitmap, HBITMAP source, HPALETTE palette) {
  const int status = Zv_ConvertFromDDB(dc, bitmap, source, palette);
  if (status != KSUCCESS) return status;
  DeleteObject(source);
  if (palette != nullptr) DeleteObject(palette);
  return KSUCCESS;
}
