// Device contexts over a bitmap's own pixels: what GDI draws there changes the bitmap.
#include <zavo.h>

#include "color/dib_layout.h"
#include "core/owners.h"
#include "core/perspective.h"
#include "core/status.h"

namespace zavo {
namespace {

using CreateDIBSectionFunction = HBITMAP(WINAPI*)(HDC, const BITMAPINFO*, UINT, void**, HANDLE, DWORD);

// Hosts exist whose graphics interface does not have it, so it is looked up at run time.
CreateDIBSectionFunction findCreateDIBSection() {
  const HMODULE gdi = GetModuleHandleA("GDI32");
  if (gdi == nullptr) return nullptr;
  return reinterpret_cast<CreateDIBSectionFunction>(reinterpret_cast<void*>(GetProcAddress(gdi, "CreateDIBSection")));
}

bool canBeDrawnOn(int bitsPerPixel) {
  return bitsPerPixel == 1 || bitsPerPixel == 4 || bitsPerPixel == 8 || bitsPerPixel > 8;
}

// Run-length rows become ordinary ones, in place. They must lie in memory: nothing can be drawn into a temporary file.
bool unpackStorage(BitmapHandle& bitmap) {
  if (!isRunLength(bitmap)) return true;
  OwnedBitmap work;
  if (Zv_InitBitmap(work.get(), bitmap.Width, bitmap.Height, bitmap.BitsPerPixel) != KSUCCESS ||
      Zv_AllocateBitmap(work.get(), ALLOC_MEMORY_ONLY) != KSUCCESS ||
      Zv_CopyBitmapData(work.get(), &bitmap) != KSUCCESS) {
    return false;
  }
  // The storage changes under the record; everything else it holds stays.
  const BitmapHandle unpacked = work.release();
  BitmapHandle changed = bitmap;
  changed.StorageHandle = unpacked.StorageHandle;
  changed.Data = unpacked.Data;
  changed.DataSize = unpacked.DataSize;
  changed.CachedRow = unpacked.CachedRow;
  changed.CachedRowOffset = unpacked.CachedRowOffset;
  changed.Flags = (bitmap.Flags & ~static_cast<unsigned>(BMF_RUNLENGTH)) | (unpacked.Flags & BMF_MEMORY);
  Zv_FreeImage(&bitmap, 0);
  bitmap = changed;
  return true;
}

// Rows that run along the picture's columns are stored anew, bottom-up.
bool unturn(BitmapHandle& bitmap) {
  return !isRotated(bitmap.ViewPerspective) ||
         Zv_ChangeBitmapViewPerspective(nullptr, &bitmap, VIEW_BOTTOM_UP) == KSUCCESS;
}

// Selects the bitmap's pixels into a memory device context.
bool selectPixels(HDC dc, BitmapHandle& bitmap, CreateDIBSectionFunction createSection) {
  StoredRowsInfo info;
  describeStoredRows(info, bitmap, isFlipped(bitmap.ViewPerspective) ? bitmap.Height : -bitmap.Height);
  void* bits = nullptr;
  HBITMAP section = createSection(dc, info.get(), DIB_RGB_COLORS, &bits, bitmap.StorageHandle, 0);
  if (section == nullptr) return false;
  DeleteObject(SelectObject(dc, section));
  return true;
}

// The bitmap's region as it lies on the picture, null for none. False when it cannot be had.
bool clipOf(RegionObject& clip, BitmapHandle& bitmap) {
  if (bitmap.Region == nullptr) return true;
  constexpr RegionXForm upright = {0, 1, 1, 1, 1, 0, 0};
  HRGN region = nullptr;
  if (Zv_GetBitmapRgnHandle(&bitmap, &upright, &region) != KSUCCESS) return false;
  clip.reset(region);
  return true;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

HDC ZAVO_CALL Zv_CreateZavoDC(BitmapHandle* bitmap) {
  if (!isAllocated(bitmap) || !canBeDrawnOn(bitmap->BitsPerPixel)) return nullptr;
  if (!unpackStorage(*bitmap)) return nullptr;
  const CreateDIBSectionFunction createSection = findCreateDIBSection();
  if (createSection == nullptr) return nullptr;
  if (!unturn(*bitmap)) return nullptr;
  RegionObject clip;
  if (!clipOf(clip, *bitmap)) return nullptr;
  const ScreenDC screen;
  MemoryDC dc(CreateCompatibleDC(screen.get()));
  if (!dc || !selectPixels(dc.get(), *bitmap, createSection)) return nullptr;
  if (clip) SelectClipRgn(dc.get(), clip.get());
  return dc.release();
}

int ZAVO_CALL Zv_DeleteZavoDC(HDC dc) {
  // Only an object that is not selected can be deleted, so the device context goes first: that needs no resource.
  const HGDIOBJ section = GetCurrentObject(dc, OBJ_BITMAP);
  const int result = DeleteDC(dc);
  if (result != 0) DeleteObject(section);
  return result;
}
