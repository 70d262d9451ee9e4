#include "output/seen_picture.h"

#include <algorithm>
#include <array>

namespace zavotest {
namespace {

struct Place {
  int column;
  int row;
};

// Where the pixel seen at x, y is stored, in an image of that stored size.
Place storedPlace(int perspective, int width, int height, int x, int y) {
  switch (perspective) {
    case VIEW_BOTTOM_UP:
      return {x, height - 1 - y};
    case VIEW_TURNED_90:
      return {y, height - 1 - x};
    case VIEW_TURNED_270:
      return {width - 1 - y, x};
    default:
      return {x, y};
  }
}

bool isTurned(int perspective) {
  return perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
}

template <typename PixelAt>
Picture upright(const BitmapHandle& bitmap, PixelAt pixelAt) {
  const bool turned = isTurned(bitmap.ViewPerspective);
  Picture seen(turned ? bitmap.Height : bitmap.Width, turned ? bitmap.Width : bitmap.Height);
  for (int y = 0; y < seen.height; ++y) {
    for (int x = 0; x < seen.width; ++x) {
      const Place place = storedPlace(bitmap.ViewPerspective, bitmap.Width, bitmap.Height, x, y);
      seen.at(x, y) = pixelAt(place.column, place.row);
    }
  }
  return seen;
}

uint32_t swappedEnds(uint32_t bgr) {
  return (bgr & 0xFF) << 16 | (bgr & 0xFF00) | bgr >> 16;
}

}  // namespace

Picture seenOf(BitmapHandle& bitmap) {
  const Picture stored = pictureOf(bitmap);
  const std::vector<PALETTEENTRY> palette = colorsOf(bitmap);
  return upright(bitmap, [&](int column, int row) -> uint32_t {
    const uint32_t pixel = stored.at(column, row);
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
  });
}

Picture seenRegionOf(const BitmapHandle& bitmap) {
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
      const Place place = storedPlace(perspective, width, height, x, y);
      COLORREF value = swappedEnds(color);
      if (bits <= 8) {
        value = 0x01000000 | static_cast<COLORREF>(std::find(found.begin(), found.end(), color) - found.begin());
      }
      Zv_PutPixelColor(&bitmap, place.row, place.column, value);
    }
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

}  // namespace zavotest
