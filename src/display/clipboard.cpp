// Pictures, palettes and regions to and from the clipboard.
#include <zavo.h>

#include <cstdint>

#include "color/dib_layout.h"
#include "core/module.h"
#include "core/owners.h"
#include "core/status.h"

namespace zavo {
namespace {

constexpr unsigned everything = CLIP_EMPTY | CLIP_DIB | CLIP_DDB | CLIP_PALETTE | CLIP_REGION;

// The clipboard, opened while this lives.
class [[nodiscard]] OpenedClipboard {
 public:
  explicit OpenedClipboard(HWND window) : open_(OpenClipboard(window) != FALSE) {}
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;
  ~OpenedClipboard() {
    if (open_) CloseClipboard();
  }
  explicit operator bool() const { return open_; }

 private:
  bool open_;
};

// Gives an object to the clipboard, which owns it from then on.
template <typename Object>
void place(UINT format, Object& object) {
  if (object && SetClipboardData(format, object.get()) != nullptr) (void)object.release();
}

// Everything to be placed, made before the clipboard is opened.
struct Offer {
  PaletteObject palette;
  GlobalMemory dib;
  GlobalMemory region;
  BitmapObject ddb;

  [[nodiscard]] int prepare(HWND window, BitmapHandle& bitmap, unsigned flags);
  void placeAll();
};

int Offer::prepare(HWND window, BitmapHandle& bitmap, unsigned flags) {
  if ((flags & CLIP_PALETTE) != 0) {
    const ScreenDC dc(window);
    if (!dc) return KERR_BAD_PARAMETER;
    palette.reset(Zv_CreatePaintPalette(dc.get(), &bitmap));
  }
  if ((flags & CLIP_DIB) != 0) {
    dib.reset(Zv_ConvertToDIB(&bitmap));
    if (!dib) return KERR_NO_MEMORY;
  }
  if ((flags & CLIP_REGION) != 0 && bitmap.Region != nullptr) {
    OwnedBitmap mask;
    if (const int status = Zv_CreateMaskFromBitmapRgn(&bitmap, mask.get()); status != KSUCCESS) return status;
    region.reset(Zv_ChangeToDIB(mask.get()));
    if (!region) return KERR_NO_MEMORY;
  }
  if ((flags & CLIP_DDB) != 0) {
    const ScreenDC dc(window);
    if (!dc) return KERR_BAD_PARAMETER;
    ddb.reset(Zv_ConvertToDDB(dc.get(), &bitmap));
    if (!ddb) return KERR_NO_MEMORY;
  }
  return KSUCCESS;
}

void Offer::placeAll() {
  place(CF_PALETTE, palette);
  place(CF_DIB, dib);
  place(regionClipboardFormat(), region);
  place(CF_BITMAP, ddb);
}

int convertPackedDib(BitmapHandle* bitmap, HGLOBAL dib) {
  const GlobalLockOf<const uint8_t> memory(dib);
  if (!memory) return KERR_BAD_PARAMETER;
  const size_t bytes = GlobalSize(dib);
  DibHeader header;
  if (!readDibHeader(header, memory.get(), bytes)) return KERR_BAD_DIB;
  if (const int status = checkDibHeader(header); status != KSUCCESS) return status;
  if (header.rowsOffset() + header.imageBytes() > bytes) return KERR_BAD_DIB;
  const auto* info = reinterpret_cast<const BITMAPINFO*>(memory.get());
  return Zv_ConvertFromDIB(bitmap, info, memory.get() + static_cast<size_t>(header.rowsOffset()));
}

int readBitmapFormat(HWND window, BitmapHandle* bitmap) {
  auto* offered = static_cast<HPALETTE>(GetClipboardData(CF_PALETTE));
  const PaletteObject system(offered == nullptr ? Zv_CreateSystemPalette() : nullptr);
  const ScreenDC dc(window);
  return Zv_ConvertFromDDB(dc.get(), bitmap, static_cast<HBITMAP>(GetClipboardData(CF_BITMAP)),
                           offered != nullptr ? offered : system.get());
}

// A failure leaves the bitmap without the region.
void readRegion(BitmapHandle* bitmap) {
  if (!IsClipboardFormatAvailable(regionClipboardFormat())) return;
  OwnedBitmap mask;
  if (convertPackedDib(mask.get(), GetClipboardData(regionClipboardFormat())) != KSUCCESS) return;
  (void)Zv_SetBitmapRgnFromMask(bitmap, nullptr, mask.get(), CombineSet);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CopyToClipboardExt(HWND window, BitmapHandle* bitmap, unsigned flags) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  Offer offer;
  if (const int status = offer.prepare(window, *bitmap, flags); status != KSUCCESS) return status;
  const OpenedClipboard clipboard(window);
  if (!clipboard) return KERR_BAD_PARAMETER;
  if ((flags & CLIP_EMPTY) != 0) EmptyClipboard();
  offer.placeAll();
  return KSUCCESS;
}

int ZAVO_CALL Zv_CopyToClipboard(HWND window, BitmapHandle* bitmap) {
  return Zv_CopyToClipboardExt(window, bitmap, everything) == KSUCCESS ? 1 : 0;
}

int ZAVO_CALL Zv_CopyFromClipboard(HWND window, BitmapHandle* bitmap) {
  if (bitmap == nullptr) return 0;
  const OpenedClipboard clipboard(window);
  if (!clipboard) return 0;
  int status = 0;
  if (IsClipboardFormatAvailable(CF_DIB)) {
    status = convertPackedDib(bitmap, GetClipboardData(CF_DIB));
  } else if (IsClipboardFormatAvailable(CF_BITMAP)) {
    status = readBitmapFormat(window, bitmap);
  }
  if (status != KSUCCESS) return 0;
  readRegion(bitmap);
  return 1;
}

int ZAVO_CALL Zv_ClipboardReady() {
  return IsClipboardFormatAvailable(CF_DIB) || IsClipboardFormatAvailable(CF_BITMAP) ? 1 : 0;
}
