#include "output/page_surface.h"

#include <algorithm>

namespace zavotest {

PageSurface::PageSurface(const PageDevice& device)
    : device_(device), dc_(CreateCompatibleDC(nullptr)), caps_([this](HDC dc, int index) {
        if (dc != dc_) return caps_.original(dc, index);
        switch (index) {
          case HORZRES:
            return device_.width;
          case VERTRES:
            return device_.height;
          case BITSPIXEL:
            return device_.bits;
          case PLANES:
            return 1;
          case NUMCOLORS:
            return device_.colors;
          case TECHNOLOGY:
            return device_.technology;
          default:
            return caps_.original(dc, index);
        }
      }) {
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), device.width, -device.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&pixels_), nullptr, 0);
  displaced_ = SelectObject(dc_, bitmap_);
  clear();
}

PageSurface::~PageSurface() {
  SelectObject(dc_, displaced_);
  DeleteObject(bitmap_);
  DeleteDC(dc_);
}

void PageSurface::clear() {
  GdiFlush();
  std::fill_n(pixels_, static_cast<size_t>(device_.width) * static_cast<size_t>(device_.height), 0xFFFFFFu);
}

Picture PageSurface::picture() const {
  GdiFlush();
  Picture result(device_.width, device_.height);
  for (size_t i = 0; i < result.pixels.size(); ++i) result.pixels[i] = pixels_[i] & 0xFFFFFF;
  return result;
}

RECT PageSurface::drawn() const {
  return drawnPart(picture());
}

RECT drawnPart(const Picture& picture) {
  RECT part = {picture.width, picture.height, 0, 0};
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      if (picture.at(x, y) == 0xFFFFFF) continue;
      part = {std::min<LONG>(part.left, x), std::min<LONG>(part.top, y), std::max<LONG>(part.right, x + 1),
              std::max<LONG>(part.bottom, y + 1)};
    }
  }
  return part.right == 0 ? RECT{} : part;
}

}  // namespace zavotest
