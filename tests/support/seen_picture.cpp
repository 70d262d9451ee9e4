#include "support/seen_picture.h"

#include <algorithm>
#include <array>

namespace zavotest {
namespace {

bool isTurned(int perspective) {
  return perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
}

template <typename PixelAt>
Picture upright(BitmapHandle& bitmap, PixelAt pixelAt) {
  const bool turned = isTurned(bitmap.ViewPerspective);
  Picture seen(turned ? bitmap.Height : bitmap.Width, turned ? bitmap.Width : bitmap.Height);
  for (int y = 0; y < seen.height; ++y) {
    for (int x = 0; x < seen.width; ++x) {
      int column = x, row = y;
      Zv_PointToBitmap(&bitmap, VIEW_UPRIGHT, &column, &row);
      seen.at(x, y) = pixelAt(column, row);
    }
  }
  return seen;
}

uint32_t swappedEnds(uint32_t bgr) {
  return (bgr & 0xFF) << 16 | (bgr & 0xFF00) | bgr >> 16;
}

}  // namespace

Picture seenValuesOf(BitmapHandle& bitmap) {
  const Picture stored = pictureOf(bitmap);
  return upright(bitmap, [&](int column, int row) { return stored.at(column, row); });
}

Picture seenOf(BitmapHandle& bitmap) {
  const std::vector<PALETTEENTRY> palette = colorsOf(bitmap);
  Picture seen = seenValuesOf(bitmap);
  const auto colorOf = [&](uint32_t pixel) -> uint32_t {
    if (bitmap.BitsPerPixel <= 8) {
      if (pixel >= palette.size()) return 0xFF000000;
      const PALETTEENTRY& entry = palette[pixel];
      return static_cast<uint32_t>(entry.peRed << 16 | entry.peGreen << 8 | entry.peBlue);
    }
    const bool blueFirst = bitmap.ColorOrder == ORDER_BLUE_FIRST;
    if (bitmap.BitsPerPixel == 16) {
      const uint32_t word = pixel >> 8 | (pixel & 0xFF) << 8;
      const uint32_t high = (word >> 10 & 31) << 19, low = (word & 31) << 3, green = (word >> 5 & 31) << 11;
      return blueFirst ? high | green | low : swappedEnds(high | green | low);
    }
    const uint32_t color = bitmap.BitsPerPixel == 32 ? pixel >> 8 : pixel;  // the fourth byte is no colour
    return blueFirst ? swappedEnds(color) : color;
  };
  for (uint32_t& pixel : seen.pixels) pixel = colorOf(pixel);
  return seen;
}

Picture seenRegionOf(BitmapHandle& bitmap) {
  return upright(bitmap, [&](int column, int row) {
    return static_cast<uint32_t>(Zv_IsPtInBitmapRgn(&bitmap, row, column) == 1);
  });
}

void makeSeen(BitmapHandle& bitmap, const Picture& colors, int bits, int perspective, int memoryType) {
  const bool turned = isTurned(perspective);
  const int width = turned ? colors.height : colors.width;
  const int height = turned ? colors.width : colors.height;
  std::array<RGBQUAD, 256> palette{};
  std::vector<uint32_t> found;
  for (const uint32_t color : colors.pixels) {
    if (std::find(found.begin(), found.end(), color) != found.end() || found.size() == palette.size()) continue;
    palette[found.size()] = {static_cast<BYTE>(color), static_cast<BYTE>(color >> 8), static_cast<BYTE>(color >> 16),
                             0};
    found.push_back(color);
  }
  Zv_CreateBitmap(&bitmap, memoryType, width, height, bits, ORDER_BLUE_FIRST, palette.data(), perspective);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < colors.height; ++y) {
    for (int x = 0; x < colors.width; ++x) {
      const uint32_t color = colors.at(x, y);
      COLORREF value = swappedEnds(color);
      if (bits <= 8) {
        value = 0x01000000 | static_cast<COLORREF>(std::find(found.begin(), found.end(), color) - found.begin());
      }
      int column = x, row = y;
      Zv_PointToBitmap(&bitmap, VIEW_UPRIGHT, &column, &row);
      Zv_PutPixelColor(&bitmap, row, column, value);
    }
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

}  // namespace zavotest
