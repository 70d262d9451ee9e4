// Devices to paint on: a memory surface whose pixels can be read, and devices of depths that no screen has.
#pragma once

#include <zavo.h>

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "core/owners.h"
#include "support/import_patch.h"
#include "support/test_bitmap.h"

namespace zavotest {

constexpr uint32_t untouched = 0x123456;  // what a canvas is filled with

// A memory device context over 32-bit pixels.
class Canvas {
 public:
  Canvas(int width, int height, uint32_t background = untouched)
      : width_(width), height_(height), background_(background), dc_(CreateCompatibleDC(nullptr)) {
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits_), nullptr, 0);
    displaced_ = SelectObject(dc_, bitmap_);
    clear();
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  ~Canvas() {
    SelectObject(dc_, displaced_);
    DeleteObject(bitmap_);
    DeleteDC(dc_);
  }

  void clear() {
    GdiFlush();
    std::fill_n(bits_, count(), background_);
  }
  [[nodiscard]] HDC dc() const { return dc_; }
  [[nodiscard]] int width() const { return width_; }
  [[nodiscard]] int height() const { return height_; }
  // 0xRRGGBB, row by row from the top.
  [[nodiscard]] std::vector<uint32_t> pixels() const {
    GdiFlush();
    std::vector<uint32_t> result(bits_, bits_ + count());
    for (uint32_t& pixel : result) pixel &= 0xFFFFFF;
    return result;
  }
  [[nodiscard]] Picture picture() const {
    Picture result(width_, height_);
    result.pixels = pixels();
    return result;
  }

 private:
  [[nodiscard]] size_t count() const { return static_cast<size_t>(width_) * static_cast<size_t>(height_); }

  int width_;
  int height_;
  uint32_t background_;
  HDC dc_;
  HBITMAP bitmap_;
  HGDIOBJ displaced_;
  uint32_t* bits_ = nullptr;
};

// The canvas holds these pixels; the failure text names the first that differs.
inline testing::AssertionResult shows(const Canvas& canvas, const std::vector<uint32_t>& expected) {
  const std::vector<uint32_t> shown = canvas.pixels();
  const auto [at, other] = std::mismatch(shown.begin(), shown.end(), expected.begin());
  if (at == shown.end()) return testing::AssertionSuccess();
  const auto index = at - shown.begin();
  return testing::AssertionFailure() << std::hex << *at << " instead of " << *other << std::dec << " at "
                                     << index % canvas.width() << ", " << index / canvas.width();
}

// While it lives, the library's GetDeviceCaps has these answers, for every device or for one device context.
class FakeDevice {
 public:
  explicit FakeDevice(const std::map<int, int>& answers, HDC only = nullptr)
      : caps_([=, this](HDC dc, int index) {
          const auto answer = answers.find(index);
          const bool meant = answer != answers.end() && (only == nullptr || dc == only);
          return meant ? answer->second : caps_.original(dc, index);
        }) {}
  explicit FakeDevice(int bits, int planes = 1, int technology = DT_RASDISPLAY)
      : FakeDevice({{BITSPIXEL, bits}, {PLANES, planes}, {TECHNOLOGY, technology}}) {}

 private:
  Replacement<"GetDeviceCaps", decltype(&GetDeviceCaps)> caps_;
};

// A palette selected into a device context and deleted at the end; null changes nothing.
class SelectedPalette {
 public:
  SelectedPalette(HDC dc, HPALETTE palette) : palette_(palette), selection_(dc, palette) {}

 private:
  zavo::PaletteObject palette_;
  zavo::PaletteSelection selection_;
};

// The thread's painting settings, put back to the defaults at the end.
class PaintSettings {
 public:
  explicit PaintSettings(unsigned flags = PAINT_DITHER) { Zv_SetDisplayMode(~0u, flags); }
  PaintSettings(const PaintSettings&) = delete;
  PaintSettings& operator=(const PaintSettings&) = delete;
  ~PaintSettings() {
    Zv_SetDisplayMode(~0u, PAINT_INDEX_COLORS | PAINT_DITHER);
    adjust(0, 0, 100);
  }
  static void adjust(int intensity, int contrast, int gamma) {
    Zv_SetPaintIntensity(intensity);
    Zv_SetPaintContrast(contrast);
    Zv_SetPaintGamma(gamma);
  }
};

}  // namespace zavotest
