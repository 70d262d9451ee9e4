// Painting, exchange with DIBs, and regions.
#include <cstring>

#include "bench.h"
#include "pictures.h"

namespace bench {
namespace {

std::string right() {
  return {};
}

// Onto a device context of 24 bits in memory. What devices of fewer colours are given is timed as dithering.
void paintOn(Bench& bench, Size size, Size shown, const char* name) {
  Bitmap source(size, 24);
  paint(source);
  DibSection device(shown, 24), other(shown, 24);
  const RECT all = {0, 0, shown.width, shown.height};
  const BITMAPINFO info = {{sizeof(BITMAPINFOHEADER), size.width, -size.height, 1, 24, BI_RGB, 0, 0, 0, 0, 0}, {}};
  SetStretchBltMode(other.dc(), COLORONCOLOR);
  const size_t bytes = (size_t(shown.width) * 24 + 31) / 32 * 4 * size_t(shown.height);
  const auto paintPicture = [&] {
    Zv_PaintDC(device.dc(), &source, nullptr, nullptr, &all, nullptr, SRCCOPY);
    GdiFlush();
  };
  const auto stretch = [&] {
    StretchDIBits(other.dc(), 0, 0, shown.width, shown.height, 0, 0, size.width, size.height, source.Data, &info,
                  DIB_RGB_COLORS, SRCCOPY);
    GdiFlush();
  };
  const auto painted = [&] {
    return device.bits()[bytes / 2] == other.bits()[bytes / 2] ? right() : std::string("another picture");
  };
  stretch();
  bench.compare(
      name, size, bytes,
      {{"Zv_PaintDC", paintPicture, shown.width == size.width ? std::function<std::string()>(painted) : right},
       {"GDI StretchDIBits", stretch, right}});
}

void exchange(Bench& bench, Size size) {
  Bitmap source(size, 24);
  paint(source);
  HGLOBAL dib = nullptr;
  const auto free = [&] {
    if (dib != nullptr) GlobalFree(dib);
    dib = nullptr;
  };
  bench.compare("to a DIB, 24 bits", size, source.DataSize,
                {{"Zv_ConvertToDIB, with allocation", [&] { dib = Zv_ConvertToDIB(&source); },
                  [&] { return dib != nullptr ? right() : std::string("no DIB"); }, free}});
  free();
}

void regions(Bench& bench, Size size) {
  Bitmap bitmap(size, 24);
  const RECT oval = {0, 0, size.width, size.height};
  const RECT rect = {size.width / 4, size.height / 4, size.width, size.height};
  HRGN ellipse = nullptr;
  const size_t bytes = size_t(size.height) * 16;
  bench.compare(
      "region of an ellipse", size, bytes,
      {{"Zv_SetBitmapRgnEllipse", [&] { Zv_SetBitmapRgnEllipse(&bitmap, nullptr, &oval, CombineSet); }, right},
       {"GDI CreateEllipticRgn",
        [&] {
          if (ellipse != nullptr) DeleteObject(ellipse);
          ellipse = CreateEllipticRgnIndirect(&oval);
        },
        right}});
  HRGN other = CreateRectRgnIndirect(&rect), result = CreateRectRgn(0, 0, 1, 1);
  bench.compare(
      "region, ellipse without a rectangle", size, bytes,
      {{"Zv_SetBitmapRgnRect", [&] { Zv_SetBitmapRgnRect(&bitmap, nullptr, &rect, CombineAndNotRegion); }, right},
       {"GDI CombineRgn", [&] { CombineRgn(result, ellipse, other, RGN_DIFF); }, right}});
  for (HRGN region : {ellipse, other, result}) {
    if (region != nullptr) DeleteObject(region);
  }
}

}  // namespace

void drawing(Bench& bench) {
  for (const Size size : {cachedSize, largeSize}) {
    if (!bench.takes(size)) continue;
    paintOn(bench, size, size, "paint on 24 bits");
    paintOn(bench, size, {size.width / 4, size.height / 4}, "paint on 24 bits, a quarter of the size");
    exchange(bench, size);
    regions(bench, size);
  }
}

}  // namespace bench
