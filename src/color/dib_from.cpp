// Bitmaps made from device-independent bitmaps. The rows of both lie the same way, so they are copied as they are.
#include <zavo.h>

#include <algorithm>
#include <cstring>

#include "color/dib_layout.h"
#include "color/palettes.h"
#include "core/owners.h"
#include "core/rows.h"

namespace zavo {
namespace {

// Dots per inch from the header, or from the screen where the header has none.
struct Resolution {
  int x, y;
};

Resolution resolutionOf(const DibHeader& header) {
  int x = header.xPixelsPerMetre;
  int y = header.yPixelsPerMetre;
  if (x == 0 || y == 0) {
    const ScreenDC screen;
    if (x == 0) x = MulDiv(GetDeviceCaps(screen.get(), HORZRES), 1000, GetDeviceCaps(screen.get(), HORZSIZE));
    if (y == 0) y = MulDiv(GetDeviceCaps(screen.get(), VERTRES), 1000, GetDeviceCaps(screen.get(), VERTSIZE));
  }
  return {dotsPerInch(x), dotsPerInch(y)};
}

// Makes a bitmap of a checked header, its palette entries (header.colors() of them) and its rows.
int makeBitmap(BitmapHandle& bitmap, const DibHeader& header, const RGBQUAD* colors, const uint8_t* rows,
               int colorOrder) {
  if (const int status =
          Zv_InitBitmap(&bitmap, header.width, static_cast<int>(header.rows()), static_cast<int>(header.bitsPerPixel));
      status != KSUCCESS) {
    return status;
  }
  if (const int status = Zv_AllocateBitmap(&bitmap, ALLOC_MEMORY); status != KSUCCESS) return status;
  bitmap.ViewPerspective = header.isTopDown() ? VIEW_UPRIGHT : VIEW_BOTTOM_UP;
  bitmap.ColorOrder = colorOrder;
  const Resolution resolution = resolutionOf(header);
  bitmap.XResolution = resolution.x;
  bitmap.YResolution = resolution.y;
  if (const unsigned count = header.colors(); count > 0) {
    // A table can have more entries than the pixels can name.
    const unsigned named = header.bitsPerPixel <= 8 ? std::min(count, 1u << header.bitsPerPixel) : count;
    bitmap.Palette = createPalette(colors, named);
    if (bitmap.Palette == nullptr) return KERR_NO_MEMORY;
  }

  const BitmapLock lock(bitmap);
  for (unsigned row = 0; row < header.rows(); ++row) {
    const int written = writeRow(bitmap, rows + size_t{row} * bitmap.BytesPerLine, row, 0, bitmap.BytesPerLine);
    if (written != static_cast<int>(bitmap.BytesPerLine)) return written < 0 ? written : KERR_WRITE;
  }
  return KSUCCESS;
}

// Reads `count` colour table entries of 3 or 4 bytes.
void readColorTable(RGBQUAD* colors, const uint8_t* table, unsigned count, unsigned entryBytes) {
  for (unsigned i = 0; i < count; ++i) {
    const uint8_t* entry = table + size_t{i} * entryBytes;
    colors[i] = {entry[0], entry[1], entry[2], 0};
  }
}

// Zv_ChangeFromDIB, with the memory left as it is.
int makeFromPacked(BitmapHandle& bitmap, const uint8_t* memory, size_t bytes) {
  DibHeader header;
  if (!readDibHeader(header, memory, bytes)) return KERR_BAD_DIB;
  if (const int status = checkDibHeader(header); status != KSUCCESS) return status;
  if (header.rowsOffset() + header.imageBytes() > bytes) return KERR_BAD_DIB;
  RGBQUAD colors[maxDibColors];
  readColorTable(colors, memory + header.headerBytes, header.colors(), header.colorEntryBytes());
  return makeBitmap(bitmap, header, colors, memory + header.rowsOffset(),
                    header.bitsPerPixel > 8 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST);
}

// How much can be read at an address that a caller handed in without saying how much lies there.
class ReadableMemory {
 public:
  // Asks for the blocks of global memory that begin at these addresses; others are known page by page only.
  ReadableMemory(const void* first, const void* second) : blocks_{blockAt(first), blockAt(second)} {}

  // Up to `wanted` bytes.
  [[nodiscard]] uint64_t from(const uint8_t* address, uint64_t wanted) const {
    for (const Block& block : blocks_) {
      if (address >= block.begin && address <= block.begin + block.bytes) {
        return std::min<uint64_t>(wanted, static_cast<size_t>(block.begin + block.bytes - address));
      }
    }
    uint64_t readable = 0;
    while (readable < wanted) {
      MEMORY_BASIC_INFORMATION pages;
      const uint8_t* at = address + static_cast<size_t>(readable);
      if (VirtualQuery(at, &pages, sizeof pages) == 0 || pages.State != MEM_COMMIT ||
          (pages.Protect & (PAGE_NOACCESS | PAGE_GUARD)) != 0) {
        break;
      }
      readable += static_cast<size_t>(static_cast<const uint8_t*>(pages.BaseAddress) + pages.RegionSize - at);
    }
    return std::min(readable, wanted);
  }

 private:
  struct Block {
    const uint8_t* begin = nullptr;
    size_t bytes = 0;
  };

  static Block blockAt(const void* address) {
    HGLOBAL memory = GlobalHandle(address);
    return memory == nullptr ? Block{} : Block{static_cast<const uint8_t*>(address), GlobalSize(memory)};
  }

  Block blocks_[2];
};

// Zv_ConvertFromDIB on pointers that are not null.
int makeFromParts(BitmapHandle& bitmap, const uint8_t* info, const uint8_t* rows) {
  const ReadableMemory memory(info, rows);
  DibHeader header;
  if (!readDibHeader(header, info, static_cast<size_t>(memory.from(info, infoHeaderBytes)))) return KERR_BAD_DIB;
  if (const int status = checkDibHeader(header); status != KSUCCESS) return status;
  if (memory.from(rows, header.imageBytes()) < header.imageBytes()) return KERR_BAD_DIB;

  // The table is read as 4-byte entries past a 40-byte header, whatever the header's size: that is how this call has
  // always taken it. What of it does not exist is black.
  RGBQUAD colors[maxDibColors] = {};
  const uint8_t* table = info + infoHeaderBytes;
  const auto readable = static_cast<unsigned>(memory.from(table, uint64_t{header.colors()} * sizeof(RGBQUAD)));
  readColorTable(colors, table, readable / sizeof(RGBQUAD), sizeof(RGBQUAD));
  return makeBitmap(bitmap, header, colors, rows, ORDER_BLUE_FIRST);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ConvertFromDIB(BitmapHandle* bitmap, const BITMAPINFO* header, const unsigned char* rows) {
  if (bitmap == nullptr || header == nullptr || rows == nullptr) return KERR_BAD_PARAMETER;
  OwnedBitmap made;
  if (const int status = makeFromParts(*made, reinterpret_cast<const uint8_t*>(header), rows); status != KSUCCESS) {
    return status;
  }
  *bitmap = made.release();
  return KSUCCESS;
}

int ZAVO_CALL Zv_ChangeFromDIB(BitmapHandle* bitmap, HGLOBAL dib) {
  if (bitmap == nullptr || dib == nullptr) return KERR_BAD_PARAMETER;
  OwnedBitmap made;
  {
    const GlobalLockOf<const uint8_t> memory(dib);
    if (!memory) return KERR_BAD_PARAMETER;
    if (const int status = makeFromPacked(*made, memory.get(), GlobalSize(dib)); status != KSUCCESS) return status;
  }
  GlobalFree(dib);
  *bitmap = made.release();
  return KSUCCESS;
}
