#include "pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace bench {
namespace {

// Deterministic noise, 0 to 255.
unsigned noise(unsigned x, unsigned y) {
  unsigned n = x * 0x9E3779B1u ^ y * 0x85EBCA77u;
  n ^= n >> 15;
  n *= 0x2C1B3C6Du;
  return n >> 24;
}

// A channel of the picture at a point.
unsigned char level(unsigned x, unsigned y, unsigned channel) {
  const unsigned slope = (x * (channel + 2) + y * (4 - channel)) / 8 % 512;
  unsigned value = slope < 256 ? slope : 511 - slope;
  const unsigned cell = x / 64 * 7 + y / 48 * 13;
  if (cell % 5 == channel) value = value / 2 + 96;
  return static_cast<unsigned char>(std::min(255u, value + (noise(x, y + channel) >> 4)));
}

}  // namespace

Bitmap::Bitmap(Size size, int bits) : BitmapHandle{} {
  if (Zv_CreateBitmap(this, ALLOC_MEMORY, size.width, size.height, bits, ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT) !=
      KSUCCESS) {
    std::cerr << "no memory for a bitmap of " << size.width << " x " << size.height << " pixels" << std::endl;
    std::abort();
  }
}

void paint(Bitmap& bitmap) {
  const int bytes = bitmap.BitsPerPixel / 8;
  for (int y = 0; y < bitmap.Height; ++y) {
    unsigned char* pixel = bitmap.row(y);
    for (int x = 0; x < bitmap.Width; ++x, pixel += bytes) {
      for (int c = 0; c < std::min(bytes, 3); ++c) {
        pixel[c] = level(static_cast<unsigned>(x), static_cast<unsigned>(y), static_cast<unsigned>(c));
      }
    }
  }
}

void makeGray(Bitmap& bitmap) {
  DeleteObject(bitmap.Palette);
  bitmap.Palette = Zv_CreateGrayPalette(8);
}

Mean meanColor(Bitmap& bitmap) {
  std::vector<unsigned char> row(size_t(bitmap.Width) * 4 + bitmap.BytesPerLine);
  RGBQUAD palette[256] = {};
  if (bitmap.BitsPerPixel <= 8) Zv_GetPaletteEntries(bitmap.Palette, 0, bitmap.ColorCount, palette);
  double sums[3] = {};
  for (int y = 0; y < bitmap.Height; ++y) {
    memcpy(row.data(), bitmap.row(y), bitmap.BytesPerLine);
    Zv_ConvertBuffer(row.data(), bitmap.Width, bitmap.BitsPerPixel, 32, bitmap.ColorOrder, ORDER_BLUE_FIRST, palette,
                     nullptr);
    unsigned rowSums[3] = {};
    for (int x = 0; x < bitmap.Width; ++x) {
      for (int c = 0; c < 3; ++c) rowSums[c] += row[size_t(x) * 4 + size_t(c)];
    }
    for (int c = 0; c < 3; ++c) sums[c] += rowSums[c];
  }
  const double pixels = double(bitmap.Width) * bitmap.Height;
  return {{sums[0] / pixels, sums[1] / pixels, sums[2] / pixels}};
}

std::string sameMean(Bitmap& a, Bitmap& b, double tolerance) {
  const Mean first = meanColor(a), second = meanColor(b);
  for (int c = 0; c < 3; ++c) {
    if (std::abs(first.channel[c] - second.channel[c]) > tolerance) {
      return "mean " + std::to_string(second.channel[c]) + " instead of " + std::to_string(first.channel[c]);
    }
  }
  return {};
}

DibSection::DibSection(Size size, int bits, const RGBQUAD* palette) : dc_(CreateCompatibleDC(nullptr)) {
  struct {
    BITMAPINFOHEADER header;
    RGBQUAD colors[256];
  } info{};
  info.header.biSize = sizeof info.header;
  info.header.biWidth = size.width;
  info.header.biHeight = -size.height;
  info.header.biPlanes = 1;
  info.header.biBitCount = static_cast<WORD>(bits);
  if (palette != nullptr) memcpy(info.colors, palette, sizeof(RGBQUAD) << bits);
  void* pixels = nullptr;
  bitmap_ = CreateDIBSection(dc_, reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, &pixels, nullptr, 0);
  bits_ = static_cast<unsigned char*>(pixels);
  displaced_ = SelectObject(dc_, bitmap_);
}

DibSection::~DibSection() {
  SelectObject(dc_, displaced_);
  DeleteObject(bitmap_);
  DeleteDC(dc_);
}

void DibSection::copyFrom(const Bitmap& bitmap) {
  memcpy(bits_, bitmap.Data, bitmap.DataSize);
}

}  // namespace bench
