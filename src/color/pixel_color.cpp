// One pixel as a colour value, whatever the bitmap's format.
#include <zavo.h>

#include <algorithm>

#include "color/color_pixels.h"
#include "color/palettes.h"
#include "core/owners.h"
#include "core/rows.h"
#include "core/status.h"

namespace zavo {
namespace {

constexpr COLORREF noColor = 0x80000000;

constexpr bool isIndexValue(COLORREF color) {
  return color >> 24 == 1;
}

PixelColor orderedColor(const BitmapHandle& bitmap, PixelColor color) {
  return bitmap.ColorOrder == ORDER_BLUE_FIRST ? color : swapEnds(color);
}

unsigned wordOf(const uint8_t pair[2]) {
  return static_cast<unsigned>(pair[0]) << 8 | pair[1];
}

// A palette index where it lies: in one byte of a row, or across two.
class IndexPlace {
 public:
  IndexPlace(unsigned column, unsigned bits) : mask_((1u << bits) - 1) {
    const auto offset = static_cast<unsigned>(uint64_t{column} * bits % 8);
    bytes_ = offset + bits > 8 ? 2 : 1;
    shift_ = 16 - bits - offset;
  }
  [[nodiscard]] unsigned bytes() const { return bytes_; }
  [[nodiscard]] unsigned get(const uint8_t pair[2]) const { return wordOf(pair) >> shift_ & mask_; }
  void set(uint8_t pair[2], unsigned index) const {
    const unsigned word = (wordOf(pair) & ~(mask_ << shift_)) | (index & mask_) << shift_;
    pair[0] = static_cast<uint8_t>(word >> 8);
    pair[1] = static_cast<uint8_t>(word);
  }

 private:
  unsigned mask_;
  unsigned bytes_;
  unsigned shift_;
};

COLORREF readIndexed(BitmapHandle& bitmap, unsigned row, unsigned column) {
  const IndexPlace place(column, static_cast<unsigned>(bitmap.BitsPerPixel));
  uint8_t pair[2] = {};
  readRow(bitmap, pair, row, column, place.bytes());
  RGBQUAD color{};
  readEntries(&color, bitmap.Palette, place.get(pair), 1);
  return RGB(color.rgbRed, color.rgbGreen, color.rgbBlue);
}

template <typename Pixel>
COLORREF readColor(BitmapHandle& bitmap, unsigned row, unsigned column) {
  uint8_t bytes[Pixel::bytes] = {};
  readRow(bitmap, bytes, row, column, Pixel::bytes);
  const PixelColor color = orderedColor(bitmap, Pixel::load(bytes));
  return RGB(color.third, color.second, color.first);
}

unsigned indexFor(const BitmapHandle& bitmap, COLORREF color) {
  if (isIndexValue(color)) return color;
  RGBQUAD palette[256];
  readPalette(bitmap, palette);
  // 1, 4 and 8 bits are searched in full, whatever the handle's count says.
  const int bits = bitmap.BitsPerPixel;
  const bool full = bits == 1 || bits == 4 || bits == 8;
  const unsigned count = full ? 1u << bits : std::min(bitmap.ColorCount, 256u);
  return nearestIndex(palette, count, GetRValue(color), GetGValue(color), GetBValue(color));
}

void writeIndexed(BitmapHandle& bitmap, unsigned row, unsigned column, COLORREF color) {
  const IndexPlace place(column, static_cast<unsigned>(bitmap.BitsPerPixel));
  uint8_t pair[2] = {};
  // Without the neighbours that share its bytes the pixel cannot be written.
  if (readRow(bitmap, pair, row, column, place.bytes()) != static_cast<int>(place.bytes())) return;
  place.set(pair, indexFor(bitmap, color));
  writeRow(bitmap, pair, row, column, place.bytes());
}

template <typename Pixel>
void writeColor(BitmapHandle& bitmap, unsigned row, unsigned column, COLORREF color) {
  uint8_t bytes[Pixel::bytes];
  Pixel::store(bytes, orderedColor(bitmap, {GetBValue(color), GetGValue(color), GetRValue(color), 0}));
  writeRow(bitmap, bytes, row, column, Pixel::bytes);
}

COLORREF readPixel(BitmapHandle& bitmap, unsigned row, unsigned column) {
  const int bits = bitmap.BitsPerPixel;
  if (bits >= 1 && bits <= 8) return readIndexed(bitmap, row, column);
  if (bits == 16) return readColor<Pixel16>(bitmap, row, column);
  if (bits == 24 || bits == 32) return readColor<Pixel24>(bitmap, row, column);
  return 0;
}

// The fourth byte of 32-bit pixels stays as it is.
void writePixel(BitmapHandle& bitmap, unsigned row, unsigned column, COLORREF color) {
  const int bits = bitmap.BitsPerPixel;
  if (bits >= 1 && bits <= 8) writeIndexed(bitmap, row, column, color);
  if (bits == 16) writeColor<Pixel16>(bitmap, row, column, color);
  if (bits == 24 || bits == 32) writeColor<Pixel24>(bitmap, row, column, color);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

COLORREF ZAVO_CALL Zv_GetPixelColor(BitmapHandle* bitmap, int row, int column) {
  if (!isAllocated(bitmap)) return noColor;
  if (row < 0 || row >= bitmap->Height || column < 0 || column >= bitmap->Width) return noColor;
  const BitmapLock lock(*bitmap);
  return readPixel(*bitmap, static_cast<unsigned>(row), static_cast<unsigned>(column));
}

int ZAVO_CALL Zv_PutPixelColor(BitmapHandle* bitmap, int row, int column, COLORREF color) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (Zv_IsPtInBitmapRgn(bitmap, row, column) == 0) return KERR_EMPTY;
  const BitmapLock lock(*bitmap);
  writePixel(*bitmap, static_cast<unsigned>(row), static_cast<unsigned>(column), color);
  return KSUCCESS;
}
