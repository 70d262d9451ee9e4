#include "color/colors.h"

#include <algorithm>
#include <cstring>

namespace zavotest {
namespace {

Color colorOfPixel(const BitmapHandle& bitmap, const Palette& palette, uint32_t pixel) {
  const bool blueFirst = bitmap.ColorOrder == ORDER_BLUE_FIRST;
  Color color;
  if (bitmap.BitsPerPixel <= 8) return colorOf(palette[pixel]);
  if (bitmap.BitsPerPixel == 16) {
    const uint32_t word = pixel >> 8 | (pixel & 0xFF) << 8;
    const auto wide = [](uint32_t c) { return c << 3 | c >> 2; };
    color = {wide(word >> 10 & 31), wide(word >> 5 & 31), wide(word & 31)};
  } else {
    if (bitmap.BitsPerPixel == 32) pixel >>= 8;
    color = {pixel & 0xFF, pixel >> 8 & 0xFF, pixel >> 16};
  }
  if (!blueFirst) std::swap(color.red, color.blue);
  return color;
}

}  // namespace

Palette paletteOf(const BitmapHandle& bitmap) {
  Palette palette(Zv_GetPaletteSize(bitmap.Palette));
  if (!palette.empty()) {
    Zv_GetPaletteEntries(bitmap.Palette, 0, static_cast<unsigned>(palette.size()), palette.data());
  }
  return palette;
}

Palette noisePalette(size_t count, std::mt19937& random) {
  Palette palette(count);
  for (auto& entry : palette) {
    const auto bits = static_cast<uint32_t>(random());
    entry = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8), static_cast<uint8_t>(bits >> 16), 0};
  }
  return palette;
}

Palette grayPalette(size_t count) {
  Palette palette(count);
  for (size_t i = 0; i < count; ++i) {
    const auto level = static_cast<uint8_t>(i * 255 / std::max<size_t>(count - 1, 1));
    palette[i] = {level, level, level, 0};
  }
  return palette;
}

void setPalette(BitmapHandle& bitmap, const Palette& palette) {
  if (bitmap.Palette != nullptr) DeleteObject(bitmap.Palette);
  bitmap.Palette = Zv_CreatePalette(palette.data(), static_cast<unsigned>(palette.size()));
}

std::vector<Color> colorsOf(BitmapHandle& bitmap) {
  const Palette palette = paletteOf(bitmap);
  const Picture picture = pictureOf(bitmap);
  std::vector<Color> colors;
  colors.reserve(picture.pixels.size());
  for (const uint32_t pixel : picture.pixels) colors.push_back(colorOfPixel(bitmap, palette, pixel));
  return colors;
}

void fillWithPicture(BitmapHandle& bitmap, std::mt19937& random) {
  if (bitmap.BitsPerPixel <= 8) return fillWithNoise(bitmap, random);
  const unsigned step[] = {1 + random() % 5, 1 + random() % 5, 1 + random() % 5};
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < bitmap.Height; ++y) {
    for (int x = 0; x < bitmap.Width; ++x) {
      unsigned channel[3];
      for (int c = 0; c < 3; ++c) {
        const unsigned wave = static_cast<unsigned>(x + y * (c + 1)) * step[c] % 512;
        channel[c] = std::min(255u, (wave < 256 ? wave : 511 - wave) + random() % 8);
      }
      if (bitmap.BitsPerPixel == 16) {
        const unsigned word = channel[2] >> 3 << 10 | channel[1] >> 3 << 5 | channel[0] >> 3 | (random() & 1) << 15;
        memcpy(&row[static_cast<size_t>(x) * 2], &word, 2);
      } else {
        const auto bytes = static_cast<size_t>(bitmap.BitsPerPixel / 8);
        for (size_t c = 0; c < 3; ++c) row[static_cast<size_t>(x) * bytes + c] = static_cast<uint8_t>(channel[c]);
      }
    }
    Zv_PutBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

}  // namespace zavotest
