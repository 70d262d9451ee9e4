#include "color/colors.h"

#include <algorithm>
#include <cstring>

namespace zavotest {
namespace {

struct Pixel {
  Color color;
  unsigned alpha = 0, index = 0;
};

Pixel parse(uint32_t pixel, const Format& format) {
  if (format.depth == 0) return {{pixel, pixel, pixel}, 0, pixel};
  if (format.depth <= 8) return {colorOf(format.colors()[pixel]), 0, pixel};
  const auto byte = [&](unsigned k) { return pixel >> (format.bits() - 8 * (k + 1)) & 255; };
  Pixel result;
  if (format.depth > 16) {
    result = {{byte(2), byte(1), byte(0)}, format.depth == 32 ? byte(3) : 0};
  } else {
    const unsigned word = byte(0) | byte(1) << 8;
    const auto wide = [](unsigned c) { return (c & 31) << 3 | (c & 31) >> 2; };
    result = {{wide(word >> 10), wide(word >> 5), wide(word)}, word >> 15 != 0 ? 255u : 0};
  }
  if (format.order != ORDER_BLUE_FIRST) std::swap(result.color.red, result.color.blue);
  return result;
}

uint32_t compose(Pixel pixel, const Format& format) {
  if (format.depth <= 8) return pixel.index;
  auto& [red, green, blue] = pixel.color;
  if (format.order != ORDER_BLUE_FIRST) std::swap(red, blue);
  if (format.depth == 16) {
    const unsigned word = red / 8 << 10 | green / 8 << 5 | blue / 8 | (pixel.alpha > 127 ? 0x8000u : 0);
    return (word & 255) << 8 | word >> 8;
  }
  const unsigned three = blue << 16 | green << 8 | red;
  return format.depth == 24 ? three : three << 8 | pixel.alpha;
}

// Indexes stay what they are where the one palette begins with the other.
bool sameStart(const Format& from, const Format& to) {
  return from.depth > 0 && from.depth <= to.depth && to.depth <= 8 &&
         memcmp(from.colors(), to.colors(), sizeof(RGBQUAD) << from.depth) == 0;
}

}  // namespace

Format formatOf(const BitmapHandle& bitmap) {
  return {bitmap.BitsPerPixel, bitmap.ColorOrder, entriesOf(bitmap.Palette)};
}

Color colorOf(uint32_t pixel, const Format& format) {
  return parse(pixel, format).color;
}

uint32_t convertedPixel(uint32_t pixel, const Format& from, const Format& to) {
  Pixel parsed = parse(pixel, from);
  const Color& c = parsed.color;
  if (to.depth == 0) {
    if (from.depth != 0) parsed.index = brightness(c);
  } else if (to.depth <= 8) {
    if (!sameStart(from, to)) {
      parsed.index = Zv_FindPaletteIndex(to.colors(), 1u << to.depth, c.red, c.green, c.blue);
    }
  } else if (from.depth != to.depth && !(from.depth == 32 && to.depth == 16)) {
    parsed.alpha = 0;
  }
  return compose(parsed, to);
}

uint32_t readPixel(const uint8_t* row, size_t x, unsigned bits) {
  uint32_t pixel = 0;
  for (size_t bit = x * bits; bit < (x + 1) * bits; ++bit) pixel = pixel << 1 | (row[bit / 8] >> (7 - bit % 8) & 1);
  return pixel;
}

void writePixel(uint8_t* row, size_t x, unsigned bits, uint32_t pixel) {
  for (unsigned i = 0; i < bits; ++i) {
    uint8_t& byte = row[(x * bits + i) / 8];
    const auto mask = static_cast<uint8_t>(0x80 >> (x * bits + i) % 8);
    byte = static_cast<uint8_t>((pixel >> (bits - 1 - i) & 1) != 0 ? byte | mask : byte & ~mask);
  }
}

Palette entriesOf(HPALETTE handle) {
  Palette palette(Zv_GetPaletteSize(handle));
  if (!palette.empty()) Zv_GetPaletteEntries(handle, 0, static_cast<unsigned>(palette.size()), palette.data());
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
  const Format format = formatOf(bitmap);
  const Picture picture = pictureOf(bitmap);
  std::vector<Color> colors;
  colors.reserve(picture.pixels.size());
  for (const uint32_t pixel : picture.pixels) colors.push_back(colorOf(pixel, format));
  return colors;
}

bool paddingIsZero(BitmapHandle& bitmap) {
  const std::vector<uint8_t> bytes = bytesOf(bitmap);
  const auto usedBits = static_cast<size_t>(bitmap.Width * bitmap.BitsPerPixel);
  for (size_t row = 0; row < bytes.size(); row += bitmap.BytesPerLine) {
    for (size_t bit = usedBits; bit < bitmap.BytesPerLine * 8; ++bit) {
      if (readPixel(&bytes[row], bit, 1) != 0) return false;
    }
  }
  return true;
}

void fillWithPicture(BitmapHandle& bitmap, std::mt19937& random) {
  if (bitmap.BitsPerPixel <= 8) return fillWithNoise(bitmap, random);
  const Format format = formatOf(bitmap), colors = {32, ORDER_BLUE_FIRST};
  const unsigned step[] = {1 + random() % 5, 1 + random() % 5, 1 + random() % 5};
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < bitmap.Height; ++y) {
    for (int x = 0; x < bitmap.Width; ++x) {
      uint32_t color = 0;
      for (int c = 0; c < 3; ++c) {
        const unsigned wave = static_cast<unsigned>(x + y * (c + 1)) * step[c] % 512;
        color = color << 8 | std::min(255u, (wave < 256 ? wave : 511 - wave) + random() % 8);
      }
      const uint32_t pixel = convertedPixel(color << 8 | (random() & 255), colors, format);
      writePixel(row.data(), static_cast<size_t>(x), format.bits(), pixel);
    }
    Zv_PutBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

}  // namespace zavotest
