// Reading and judging the headers of device-independent bitmaps.
#include "color/dib_layout.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "color/palettes.h"

namespace zavo {
namespace {

int clampToInt(int64_t value) {
  return static_cast<int>(std::clamp(value, int64_t{INT_MIN}, int64_t{INT_MAX}));
}

bool isDibDepth(unsigned bitsPerPixel) {
  for (const unsigned bits : {1u, 4u, 8u, 16u, 24u, 32u}) {
    if (bitsPerPixel == bits) return true;
  }
  return false;
}

}  // namespace

unsigned DibHeader::colors() const {
  if (!isCore() && colorsUsed != 0) return colorsUsed;
  return bitsPerPixel <= 8 ? 1u << bitsPerPixel : 0;
}

bool readDibHeader(DibHeader& header, const void* memory, size_t available) {
  header = {};
  if (available < coreHeaderBytes) return false;
  memcpy(&header.headerBytes, memory, sizeof header.headerBytes);
  if (header.isCore()) {
    BITMAPCOREHEADER core;
    memcpy(&core, memory, sizeof core);
    header.width = core.bcWidth;
    header.height = core.bcHeight;
    header.planes = core.bcPlanes;
    header.bitsPerPixel = core.bcBitCount;
    return true;
  }
  if (available < infoHeaderBytes) return false;
  BITMAPINFOHEADER info;
  memcpy(&info, memory, sizeof info);
  header.width = info.biWidth;
  header.height = info.biHeight;
  header.planes = info.biPlanes;
  header.bitsPerPixel = info.biBitCount;
  header.compression = info.biCompression;
  header.colorsUsed = info.biClrUsed;
  if (header.headerBytes == infoHeaderBytes) {
    // Longer headers have these fields too, but only the plain one is trusted to have filled them in.
    header.xPixelsPerMetre = info.biXPelsPerMeter;
    header.yPixelsPerMetre = info.biYPelsPerMeter;
  }
  return true;
}

void writeDibHeader(uint8_t* memory, const DibHeader& header) {
  BITMAPINFOHEADER info{};
  info.biSize = header.headerBytes;
  info.biWidth = header.width;
  info.biHeight = header.height;
  info.biPlanes = static_cast<WORD>(header.planes);
  info.biBitCount = static_cast<WORD>(header.bitsPerPixel);
  info.biCompression = header.compression;
  info.biSizeImage = static_cast<DWORD>(header.imageBytes());
  info.biXPelsPerMeter = header.xPixelsPerMetre;
  info.biYPelsPerMeter = header.yPixelsPerMetre;
  info.biClrUsed = header.colorsUsed;
  memcpy(memory, &info, sizeof info);
}

int checkDibHeader(const DibHeader& header) {
  if (header.width <= 0 || header.height == 0 || header.height == INT_MIN) return KERR_BAD_DIB;
  if (header.planes != 1 || header.compression != BI_RGB || !isDibDepth(header.bitsPerPixel)) return KERR_BAD_DIB;
  if (header.colors() > maxDibColors) return KERR_BAD_DIB;
  if (header.imageBytes() > UINT32_MAX) return KERR_BAD_DIB;
  return KSUCCESS;
}

void describeStoredRows(StoredRowsInfo& info, const BitmapHandle& bitmap, int height) {
  info = {};
  info.header.biSize = infoHeaderBytes;
  info.header.biWidth = bitmap.Width;
  info.header.biHeight = height;
  info.header.biPlanes = 1;
  info.header.biBitCount = static_cast<WORD>(bitmap.BitsPerPixel);
  info.header.biSizeImage = bitmap.BytesPerLine * static_cast<unsigned>(bitmap.Height);
  if (bitmap.BitsPerPixel <= 8) info.header.biClrUsed = readPalette(bitmap, info.colors);
}

unsigned dibDepthFor(unsigned bitsPerPixel) {
  if (bitsPerPixel == 1) return 1;
  if (bitsPerPixel <= 4) return 4;
  return bitsPerPixel <= 8 ? 8 : 24;
}

int pixelsPerMetre(int dotsPerInch) {
  return clampToInt((int64_t{dotsPerInch} * 10000 + 127) / 254);
}

int dotsPerInch(int pixelsPerMetre) {
  return clampToInt((int64_t{pixelsPerMetre} * 254 + 5000) / 10000);
}

}  // namespace zavo
