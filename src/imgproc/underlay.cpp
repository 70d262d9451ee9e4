// Showing another picture where a bitmap is not: outside its region and through its alpha.
#include <zavo.h>

#include <cstring>

#include "color/conversion.h"
#include "color/palettes.h"
#include "core/memory.h"
#include "core/owners.h"
#include "core/packed_pixels.h"
#include "core/perspective.h"
#include "core/rows.h"
#include "core/sizes.h"
#include "core/status.h"
#include "imgproc/alpha_rows.h"
#include "region/region.h"

namespace zavo {
namespace {

// Rows of the underlay, repeated side by side to the bitmap's width, in the bitmap's format: an index a byte below 8
// bits, stored pixels above. Tiles begin in the corner that is seen top left.
class TiledRows {
 public:
  TiledRows(BitmapHandle& bitmap, BitmapHandle& tile)
      : bitmap_(bitmap),
        tile_(tile),
        reader_(tile),
        pixelBytes_(bitmap.BitsPerPixel > 8 ? static_cast<unsigned>(bitmap.BitsPerPixel) / 8 : 1) {}

  [[nodiscard]] int open() {
    readPaletteOrFixed(tile_, tilePalette_);
    readPaletteOrFixed(bitmap_, bitmapPalette_);
    const int status = converter_.prepare(tile_.BitsPerPixel, bitmap_.BitsPerPixel, colorOrderOf(tile_),
                                          colorOrderOf(bitmap_), tilePalette_, bitmapPalette_);
    if (status != KSUCCESS) return status;
    converted_ = OsBlock<uint8_t>::allocate(uint64_t{static_cast<unsigned>(tile_.Width)} * 4 + 4);
    row_ = OsBlock<uint8_t>::allocate(uint64_t{static_cast<unsigned>(bitmap_.Width)} * pixelBytes_);
    if (!converted_ || !row_) return KERR_NO_MEMORY;
    return reader_.open();
  }

  // What lies under stored row `y` of the bitmap; null when it could not be read, see status().
  [[nodiscard]] const uint8_t* row(int y) {
    const int tileHeight = tile_.Height;
    const bool fromBottom = isFlipped(bitmap_.ViewPerspective) || bitmap_.ViewPerspective == VIEW_TURNED_90;
    const int tileRow = fromBottom ? tileHeight - 1 - (bitmap_.Height - 1 - y) % tileHeight : y % tileHeight;
    if (tileRow == current_) return row_.get();
    const uint8_t* stored = reader_.row(static_cast<unsigned>(tileRow));
    if (stored == nullptr) return nullptr;
    converter_.convert(converted_.get(), stored, static_cast<unsigned>(tile_.Width));
    repeat();
    current_ = tileRow;
    return row_.get();
  }
  [[nodiscard]] int status() const { return reader_.status(); }
  [[nodiscard]] unsigned pixelBytes() const { return pixelBytes_; }

 private:
  void repeat() {
    const auto tileWidth = static_cast<unsigned>(tile_.Width);
    const auto width = static_cast<unsigned>(bitmap_.Width);
    // Tiles that begin at the right end leave a part of one at the left.
    unsigned skipped = 0;
    if (bitmap_.ViewPerspective == VIEW_TURNED_270) skipped = (tileWidth - width % tileWidth) % tileWidth;
    for (unsigned x = 0; x < width; skipped = 0) {
      const unsigned count = tileWidth - skipped < width - x ? tileWidth - skipped : width - x;
      uint8_t* to = row_.get() + x * pixelBytes_;
      if (bitmap_.BitsPerPixel < 8) {
        unpackFunction(bitmap_.BitsPerPixel)(to, converted_.get(), skipped, count);
      } else {
        memcpy(to, converted_.get() + skipped * pixelBytes_, count * pixelBytes_);
      }
      x += count;
    }
  }

  BitmapHandle& bitmap_;
  BitmapHandle& tile_;
  RowReader reader_;
  unsigned pixelBytes_;
  RGBQUAD tilePalette_[256];
  RGBQUAD bitmapPalette_[256];
  RowConverter converter_;
  OsBlock<uint8_t> converted_;
  OsBlock<uint8_t> row_;
  int current_ = -1;
};

// Work on the pixels of a row from column `first` to before `last`, `under` being what lies under the row.
using PieceFunction = void (*)(uint8_t* row, const uint8_t* under, unsigned first, unsigned last);

template <int bits>
void replaceIndexes(uint8_t* row, const uint8_t* under, unsigned first, unsigned last) {
  packFunction(bits)(row, under + first, first, last - first);
}

template <unsigned pixelBytes>
void replacePixels(uint8_t* row, const uint8_t* under, unsigned first, unsigned last) {
  memcpy(row + size_t{first} * pixelBytes, under + size_t{first} * pixelBytes, (last - first) * pixelBytes);
}

template <typename Pixel>
void replaceColors(uint8_t* row, const uint8_t* under, unsigned first, unsigned last) {
  putColors<Pixel>(row + first * sizeof(Pixel), under + first * sizeof(Pixel), last - first);
}

// Lets the underlay through where bit 15 is clear.
void showThrough16(uint8_t* row, const uint8_t* under, unsigned first, unsigned last) {
  for (size_t x = first; x < last; ++x) {
    const bool opaque = (row[2 * x + 1] & 0x80) != 0;
    row[2 * x] = opaque ? row[2 * x] : under[2 * x];
    row[2 * x + 1] = opaque ? row[2 * x + 1] : under[2 * x + 1] & 0x7F;
  }
}

// Lets the underlay through by what the fourth byte leaves of it; rounded to nearest.
void showThrough32(uint8_t* row, const uint8_t* under, unsigned first, unsigned last) {
  for (size_t x = first; x < last; ++x) {
    const unsigned alpha = row[4 * x + 3];
    for (size_t channel = 4 * x; channel < 4 * x + 3; ++channel) {
      row[channel] = static_cast<uint8_t>((row[channel] * alpha + under[channel] * (255 - alpha) + 127) / 255);
    }
  }
}

// What a depth needs: pixels outside the region are replaced but for their alpha, those inside may be seen through.
struct PieceFunctions {
  PieceFunction replace;
  PieceFunction showThrough;  // null for pixels without alpha
};

PieceFunctions pieceFunctions(int bitsPerPixel) {
  static constexpr PieceFunction indexes[] = {replaceIndexes<1>, replaceIndexes<2>, replaceIndexes<3>,
                                              replaceIndexes<4>, replaceIndexes<5>, replaceIndexes<6>,
                                              replaceIndexes<7>, replacePixels<1>};
  if (bitsPerPixel == 16) return {replaceColors<uint16_t>, showThrough16};
  if (bitsPerPixel == 24) return {replacePixels<3>, nullptr};
  if (bitsPerPixel == 32) return {replaceColors<uint32_t>, showThrough32};
  return {indexes[bitsPerPixel - 1], nullptr};
}

void underlayRow(uint8_t* row, const uint8_t* under, const BitmapHandle& bitmap, int y,
                 const PieceFunctions& functions) {
  const int whole[] = {0, bitmap.Width};
  const Segments shown = bitmap.Region != nullptr ? regionRow(*bitmap.Region, y) : Segments{whole, 2};
  unsigned outside = 0;
  for (unsigned i = 0; i < shown.count; i += 2) {
    const auto first = static_cast<unsigned>(shown.values[i]);
    const auto last = static_cast<unsigned>(shown.values[i + 1]);
    if (first > outside) functions.replace(row, under, outside, first);
    if (functions.showThrough != nullptr) functions.showThrough(row, under, first, last);
    outside = last;
  }
  const auto width = static_cast<unsigned>(bitmap.Width);
  if (width > outside) functions.replace(row, under, outside, width);
}

int underlayRows(BitmapHandle& bitmap, BitmapHandle& tile) {
  const BitmapLock bitmapLock(bitmap);
  const BitmapLock tileLock(tile);
  const PieceFunctions functions = pieceFunctions(bitmap.BitsPerPixel);
  TiledRows tiles(bitmap, tile);
  RowWriter writer(bitmap);
  if (const int status = tiles.open(); status != KSUCCESS) return status;
  if (const int status = writer.open(); status != KSUCCESS) return status;
  for (int y = 0; y < bitmap.Height; ++y) {
    const uint8_t* under = tiles.row(y);
    if (under == nullptr) return tiles.status();
    uint8_t* row = writer.edit(static_cast<unsigned>(y));
    if (row == nullptr) return writer.status();
    underlayRow(row, under, bitmap, y, functions);
    if (const int status = writer.commit(static_cast<unsigned>(y)); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_UnderlayBitmap(BitmapHandle* bitmap, BitmapHandle* underlay, unsigned flags) {
  if (!isAllocated(bitmap) || !isAllocated(underlay)) return KERR_BAD_BITMAP;
  if (flags > UNDERLAY_STRETCH) return KERR_BAD_PARAMETER;
  OwnedBitmap copy;
  BitmapHandle* tile = underlay;
  if (!sameFrame(underlay->ViewPerspective, bitmap->ViewPerspective)) {
    tile = copy.get();
    const int status = Zv_ChangeBitmapViewPerspective(tile, underlay, bitmap->ViewPerspective);
    if (status != KSUCCESS) return status;
  }
  const bool stretch = flags == UNDERLAY_STRETCH && (tile->Width != bitmap->Width || tile->Height != bitmap->Height);
  if (tile == underlay && (stretch || sharesPixels(*underlay, *bitmap))) {
    tile = copy.get();
    if (const int status = Zv_CopyBitmap(tile, underlay); status != KSUCCESS) return status;
  }
  if (stretch) {
    if (const int status = Zv_SizeBitmap(tile, bitmap->Width, bitmap->Height, 0); status != KSUCCESS) return status;
  }
  return underlayRows(*bitmap, *tile);
}
