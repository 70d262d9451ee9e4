// How a packed device-independent bitmap lies in memory: header, colour table, rows. Shared by every exchange.
#pragma once

#include <zavo.h>

#include <cstddef>
#include <cstdint>

#include "core/sizes.h"
#include "core/status.h"

namespace zavo {

constexpr unsigned coreHeaderBytes = sizeof(BITMAPCOREHEADER);
constexpr unsigned infoHeaderBytes = sizeof(BITMAPINFOHEADER);
static_assert(coreHeaderBytes == 12 && infoHeaderBytes == 40);

constexpr unsigned maxDibColors = 256;

// What a header of any kind says.
struct DibHeader {
  unsigned headerBytes;  // as stored: where the colour table begins
  int width;
  int height;  // negative: the first row is the top row
  unsigned planes;
  unsigned bitsPerPixel;
  unsigned compression;
  int xPixelsPerMetre;  // 0 where the header has no resolution
  int yPixelsPerMetre;
  unsigned colorsUsed;

  [[nodiscard]] bool isCore() const { return headerBytes == coreHeaderBytes; }
  [[nodiscard]] bool isTopDown() const { return height < 0; }
  // Only for headers that checkDibHeader passed.
  [[nodiscard]] unsigned rows() const { return static_cast<unsigned>(isTopDown() ? -height : height); }
  [[nodiscard]] uint64_t rowBytes() const { return rowBytesFor(static_cast<unsigned>(width), bitsPerPixel); }
  [[nodiscard]] uint64_t imageBytes() const { return rowBytes() * rows(); }

  // Entries of the colour table: for a core header 1 << bits up to 8 bits; else the colours used when that is not 0,
  // else 1 << bits up to 8 bits.
  [[nodiscard]] unsigned colors() const;
  [[nodiscard]] unsigned colorEntryBytes() const { return isCore() ? sizeof(RGBTRIPLE) : sizeof(RGBQUAD); }
  // Where the rows begin in a packed bitmap.
  [[nodiscard]] uint64_t rowsOffset() const { return uint64_t{headerBytes} + uint64_t{colors()} * colorEntryBytes(); }
};

// Reads the header at `memory`, of which `available` bytes can be read. False when that does not hold a header.
[[nodiscard]] bool readDibHeader(DibHeader& header, const void* memory, size_t available);

// Writes the header as one of 40 bytes.
void writeDibHeader(uint8_t* memory, const DibHeader& header);

// A bitmap's rows as they are stored, for the graphics interface: a header with room for all colours.
struct StoredRowsInfo {
  BITMAPINFOHEADER header;
  RGBQUAD colors[maxDibColors];

  [[nodiscard]] const BITMAPINFO* get() const { return reinterpret_cast<const BITMAPINFO*>(this); }
};
// `height` is negative when the first stored row is the top row.
void describeStoredRows(StoredRowsInfo& info, const BitmapHandle& bitmap, int height);

// KSUCCESS, or KERR_BAD_DIB for a format the library does not take or sizes that cannot be.
[[nodiscard]] int checkDibHeader(const DibHeader& header);

// Bits per pixel of the bitmap that an image of `bitsPerPixel` becomes: 1, 4, 8 or 24.
[[nodiscard]] unsigned dibDepthFor(unsigned bitsPerPixel);

// Pixels per metre of a header from dots per inch, and back.
[[nodiscard]] int pixelsPerMetre(int dotsPerInch);
[[nodiscard]] int dotsPerInch(int pixelsPerMetre);

}  // namespace zavo
