#include "support/test_bitmap.h"

namespace zavotest {

TestBitmap::TestBitmap(int width, int height, int bits, int memoryType) : BitmapHandle{} {
  Zv_CreateBitmap(this, memoryType, width, height, bits, ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT);
}

Picture pictureOf(BitmapHandle& bitmap) {
  Picture picture(bitmap.Width, bitmap.Height);
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < bitmap.Height; ++y) {
    Zv_GetBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
    const auto bits = static_cast<size_t>(bitmap.BitsPerPixel);
    for (int x = 0; x < bitmap.Width; ++x) {
      const size_t end = static_cast<size_t>(x + 1) * bits;
      uint64_t bytes = 0;  // those that hold the pixel
      for (size_t at = (end - bits) / 8; at * 8 < end; ++at) bytes = bytes << 8 | row[at];
      picture.at(x, y) = static_cast<uint32_t>(bytes >> (7 - (end + 7) % 8) & ((uint64_t{1} << bits) - 1));
    }
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
  return picture;
}

void fillWithNoise(BitmapHandle& bitmap, std::mt19937& random) {
  std::vector<uint8_t> row(bitmap.BytesPerLine);
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (int y = 0; y < bitmap.Height; ++y) {
    for (auto& byte : row) byte = static_cast<uint8_t>(random());
    Zv_PutBitmapRow(&bitmap, row.data(), static_cast<unsigned>(y), bitmap.BytesPerLine);
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
}

void giveRandomPalette(BitmapHandle& bitmap, std::mt19937& random) {
  struct {
    WORD version = 0x300;
    WORD count = 0;
    PALETTEENTRY entries[256] = {};
  } colors;
  colors.count = static_cast<WORD>(bitmap.ColorCount);
  for (auto& [red, green, blue, flags] : colors.entries) {
    const auto color = random();
    red = static_cast<BYTE>(color);
    green = static_cast<BYTE>(color >> 8);
    blue = static_cast<BYTE>(color >> 16);
  }
  if (bitmap.Palette != nullptr) DeleteObject(bitmap.Palette);
  bitmap.Palette = CreatePalette(reinterpret_cast<const LOGPALETTE*>(&colors));
}

std::vector<uint8_t> bytesOf(BitmapHandle& bitmap) {
  if ((bitmap.Flags & BMF_ALLOCATED) == 0) return {};
  const size_t rowBytes = bitmap.BytesPerLine;
  std::vector<uint8_t> bytes(rowBytes * static_cast<size_t>(bitmap.Height));
  const int wasLocked = Zv_LockBitmap(&bitmap);
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap.Height); ++y) {
    Zv_GetBitmapRow(&bitmap, bytes.data() + y * rowBytes, y, bitmap.BytesPerLine);
  }
  Zv_UnlockBitmap(&bitmap, wasLocked);
  return bytes;
}

std::vector<PALETTEENTRY> colorsOf(const BitmapHandle& bitmap) {
  std::vector<PALETTEENTRY> colors(bitmap.Palette != nullptr ? bitmap.ColorCount : 0);
  GetPaletteEntries(bitmap.Palette, 0, static_cast<UINT>(colors.size()), colors.data());
  return colors;
}

}  // namespace zavotest
