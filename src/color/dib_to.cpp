// Device-independent bitmaps made from bitmaps: a packed block of global memory with the bottom row first.
#include <zavo.h>

#include <algorithm>
#include <cstring>

#include "color/conversion.h"
#include "color/dib_layout.h"
#include "color/palettes.h"
#include "core/owners.h"
#include "core/perspective.h"
#include "core/row_padding.h"
#include "core/rows.h"

namespace zavo {
namespace {

// What Zv_ConvertToDIB and Zv_ChangeToDIB do differently, on purpose.
struct DibStyle {
  bool namesColorsUsed;     // the bitmap's colour count in the header instead of 0, which stands for a full table
  bool keepsReservedBytes;  // of the palette entries
};

constexpr DibStyle convertStyle = {false, false};
constexpr DibStyle changeStyle = {true, true};

DibHeader headerOf(const BitmapHandle& bitmap, DibStyle style) {
  DibHeader header{};
  header.headerBytes = infoHeaderBytes;
  header.width = bitmap.Width;
  header.height = bitmap.Height;
  header.planes = 1;
  header.bitsPerPixel = dibDepthFor(static_cast<unsigned>(bitmap.BitsPerPixel));
  header.compression = BI_RGB;
  header.xPixelsPerMetre = pixelsPerMetre(bitmap.XResolution);
  header.yPixelsPerMetre = pixelsPerMetre(bitmap.YResolution);
  if (style.namesColorsUsed && bitmap.BitsPerPixel <= 8) {
    header.colorsUsed = std::min(bitmap.ColorCount, 1u << bitmap.BitsPerPixel);
  }
  return header;
}

int writeRows(uint8_t* dibRows, BitmapHandle& bitmap, const DibHeader& header, const RGBQUAD* colors) {
  const auto rowBytes = static_cast<unsigned>(header.rowBytes());
  RowConverter converter;
  if (const int status = converter.prepare(bitmap.BitsPerPixel, static_cast<int>(header.bitsPerPixel),
                                           colorOrderOf(bitmap), ORDER_BLUE_FIRST, colors, colors);
      status != KSUCCESS) {
    return status;
  }
  const bool copies = converter.changesNothing() && rowBytes == bitmap.BytesPerLine;
  const bool bottomUp = isFlipped(bitmap.ViewPerspective);
  const auto width = static_cast<unsigned>(bitmap.Width);

  const BitmapLock lock(bitmap);
  RowReader reader(bitmap);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  for (unsigned row = 0; row < header.rows(); ++row, dibRows += rowBytes) {
    const uint8_t* stored = reader.row(bottomUp ? row : header.rows() - 1 - row);
    if (stored == nullptr) return reader.status();
    if (copies) {
      memcpy(dibRows, stored, rowBytes);
    } else {
      converter.convert(dibRows, stored, width);
      clearRowPadding(dibRows, width, header.bitsPerPixel);
    }
  }
  return KSUCCESS;
}

// A packed bitmap of an upright or bottom-up bitmap, empty on failure.
GlobalMemory packed(BitmapHandle& bitmap, DibStyle style) {
  const DibHeader header = headerOf(bitmap, style);
  const uint64_t bytes = header.rowsOffset() + header.imageBytes();
  if (bytes > UINT32_MAX) return GlobalMemory();
  GlobalMemory dib(GlobalAlloc(GMEM_MOVEABLE | GMEM_DDESHARE, static_cast<SIZE_T>(bytes)));
  if (!dib) return GlobalMemory();
  const GlobalLockOf<uint8_t> memory(dib.get());
  if (!memory) return GlobalMemory();

  writeDibHeader(memory.get(), header);
  RGBQUAD colors[maxDibColors] = {};
  if (bitmap.BitsPerPixel <= 8) readPaletteOrFixed(bitmap, colors);
  if (!style.keepsReservedBytes) {
    for (RGBQUAD& color : colors) color.rgbReserved = 0;
  }
  memcpy(memory.get() + infoHeaderBytes, colors, header.colors() * sizeof(RGBQUAD));
  const int status = writeRows(memory.get() + header.rowsOffset(), bitmap, header, colors);
  return status == KSUCCESS ? std::move(dib) : GlobalMemory();
}

GlobalMemory packedAsSeen(BitmapHandle& bitmap, DibStyle style) {
  if (!isRotated(bitmap.ViewPerspective)) return packed(bitmap, style);
  OwnedBitmap turned;
  const int status = Zv_ChangeBitmapViewPerspective(turned.get(), &bitmap, VIEW_BOTTOM_UP);
  return status == KSUCCESS ? packed(*turned, style) : GlobalMemory();
}

}  // namespace
}  // namespace zavo

using namespace zavo;

HGLOBAL ZAVO_CALL Zv_ConvertToDIB(const BitmapHandle* bitmap) {
  if (!isAllocated(bitmap)) return nullptr;
  BitmapHandle record = *bitmap;
  return packedAsSeen(record, convertStyle).release();
}

HGLOBAL ZAVO_CALL Zv_ChangeToDIB(BitmapHandle* bitmap) {
  if (!isAllocated(bitmap) || (bitmap->Flags & BMF_LOCKED) != 0) return nullptr;
  GlobalMemory dib = packedAsSeen(*bitmap, changeStyle);
  if (dib) Zv_FreeBitmap(bitmap);
  return dib.release();
}
