// Painting: what is decided once (mode, rectangles, formats), and the loop over lines that then asks nothing.
#include "display/paint.h"

#include <algorithm>
#include <cstring>

#include "color/conversion.h"
#include "color/palettes.h"
#include "core/memory.h"
#include "core/owners.h"
#include "core/packed_pixels.h"
#include "core/perspective.h"
#include "core/run_records.h"
#include "core/settings.h"
#include "core/sizes.h"
#include "core/status.h"
#include "display/paint_bands.h"
#include "display/paint_coverage.h"
#include "display/paint_dither.h"
#include "display/paint_lines.h"
#include "display/paint_mode.h"
#include "display/paint_rows.h"

namespace zavo {
namespace {

// The depth that the graphics interface takes a bitmap's rows at.
int widenedBits(int bitsPerPixel) {
  if (bitsPerPixel == 1) return 1;
  if (bitsPerPixel <= 4) return 4;
  return bitsPerPixel <= 8 ? 8 : 24;
}

bool canDither(int bitsPerPixel, int outputBits) {
  return bitsPerPixel != 1 || outputBits == 8;
}

bool isCoverage(PaintMode mode) {
  return mode >= PaintMode::gray;
}

// One paint. Members are set up in the order of the steps.
class Paint {
 public:
  Paint(HDC dc, BitmapHandle& bitmap, const PaintGeometry& geometry, DWORD rop)
      : dc_(dc), bitmap_(bitmap), geometry_(geometry), rop_(rop), settings_(currentSettings()) {}

  // Lines from rows at hand, at the bitmap's depth, widened or dithered.
  [[nodiscard]] int paintLines(PaintRows& rows, bool dithered, int deviceBits) {
    PaintLines lines(bitmap_, geometry_, rows);
    if (const int status = rows.open(); status != KSUCCESS) return status;
    if (const int status = lines.open(geometry_); status != KSUCCESS) return status;
    line_ = OsBlock<uint8_t>::allocate(lines.lineBytes());
    if (!line_) return KERR_NO_MEMORY;
    readPalette(bitmap_, palette_);
    const int outputBits = std::min(deviceBits, 8);
    return dithered && canDither(bitmap_.BitsPerPixel, outputBits) ? dither(lines, outputBits) : convert(lines);
  }

  // Grey levels by coverage.
  [[nodiscard]] int paintGray(bool inverted) {
    for (unsigned i = 0; i < 256; ++i) {
      const auto level = static_cast<uint8_t>(i);
      palette_[i] = {level, level, level, 0};
    }
    BandPainter bands;
    if (const int status = open(bands, {8, palette_, true}); status != KSUCCESS) return status;
    const int status = paintCoverage(bands, bitmap_, geometry_, inverted);
    if (status == KSUCCESS) bands.finish();
    return status;
  }

 private:
  [[nodiscard]] int open(BandPainter& bands, const BandFormat& format) {
    return bands.open(dc_, settings_, geometry_.area(), format, isRotated(bitmap_.ViewPerspective), rop_);
  }

  [[nodiscard]] int prepareConverter(int outputBits) {
    return converter_.prepare(bitmap_.BitsPerPixel, outputBits, colorOrderOf(bitmap_), ORDER_BLUE_FIRST, palette_,
                              palette_);
  }

  // Indexes stay what they are, because they may refer to the palette selected into the device context.
  [[nodiscard]] int widenIndexes(PaintLines& lines, BandPainter& bands, int bits) {
    const unsigned pixels = lines.walk().pixelCount();
    const UnpackFunction unpack = unpackFunction(bitmap_.BitsPerPixel);
    auto indexes = OsBlock<uint8_t>::allocate(bits < 8 ? pixels : 0);
    if (bits < 8 && !indexes) return KERR_NO_MEMORY;
    return forEachLine(lines, bands, [&](uint8_t* to) -> int {
      const int status = lines.make(line_.get());
      if (status != KSUCCESS) return status;
      unpack(bits < 8 ? indexes.get() : to, line_.get(), 0, pixels);
      if (bits < 8) packFunction(bits)(to, indexes.get(), 0, pixels);
      return KSUCCESS;
    });
  }

  [[nodiscard]] int convert(PaintLines& lines) {
    const int bits = widenedBits(bitmap_.BitsPerPixel);
    BandPainter bands;
    if (const int status = open(bands, {bits, palette_, true}); status != KSUCCESS) return status;
    if (bits < 24 && bits != bitmap_.BitsPerPixel) return widenIndexes(lines, bands, bits);
    if (bits == 24) {
      if (const int status = prepareConverter(bits); status != KSUCCESS) return status;
    }
    const unsigned pixels = lines.walk().pixelCount();
    const bool asStored = bits < 24 || converter_.changesNothing();
    return forEachLine(lines, bands, [&](uint8_t* to) -> int {
      if (asStored) return lines.make(to);
      const int status = lines.make(line_.get());
      if (status == KSUCCESS) converter_.convert(to, line_.get(), pixels);
      return status;
    });
  }

  [[nodiscard]] int dither(PaintLines& lines, int outputBits) {
    const unsigned pixels = lines.walk().pixelCount();
    auto colors = OsBlock<uint8_t>::allocate(uint64_t{pixels} * 3);
    PaintDitherer ditherer;
    if (!colors) return KERR_NO_MEMORY;
    if (const int status = prepareConverter(24); status != KSUCCESS) return status;
    const bool turned = lines.walk().isTurned();
    const auto top = static_cast<unsigned>(geometry_.area().top - geometry_.destination().top);
    const DitherPlace place = {geometry_.firstColumn(), turned ? top + pixels - 1 : top, turned};
    if (const int status = ditherer.prepare(settings_, outputBits, pixels, place); status != KSUCCESS) return status;
    BandPainter bands;
    // The workers have adjusted the pixels already, so the target's colours stay as they are.
    if (const int status = open(bands, {outputBits, ditherer.palette(), false}); status != KSUCCESS) return status;
    for (unsigned line = 0; line < lines.walk().lineCount(); ++line) {
      // What an enlarged row is dithered from is made once.
      if (lines.walk().repeats()) {
        lines.skip();
      } else {
        if (const int status = lines.make(line_.get()); status != KSUCCESS) return status;
        converter_.convert(colors.get(), line_.get(), pixels);
      }
      ditherer.run(bands.line(), colors.get());
      bands.endLine();
    }
    bands.finish();
    return KSUCCESS;
  }

  // Calls `make` for every line that is not the same as the one before.
  template <typename Make>
  [[nodiscard]] int forEachLine(PaintLines& lines, BandPainter& bands, Make make) {
    for (unsigned line = 0; line < lines.walk().lineCount(); ++line) {
      const uint8_t* same = lines.walk().repeats() ? bands.previousLine() : nullptr;
      if (same != nullptr) {
        memcpy(bands.line(), same, bands.lineBytes());
        lines.skip();
      } else if (const int status = make(bands.line()); status != KSUCCESS) {
        return status;
      }
      bands.endLine();
    }
    bands.finish();
    return KSUCCESS;
  }

  HDC dc_;
  BitmapHandle& bitmap_;
  const PaintGeometry& geometry_;
  DWORD rop_;
  ThreadSettings& settings_;
  RGBQUAD palette_[256];
  RowConverter converter_;
  OsBlock<uint8_t> line_;
};

bool isInverted(PaintMode mode) {
  return mode == PaintMode::grayInverted || mode == PaintMode::secondGrayInverted;
}

bool isSecondGray(PaintMode mode) {
  return mode >= PaintMode::secondGray;
}

}  // namespace

int paintBitmap(HDC dc, BitmapHandle& bitmap, const PaintRequest& request, DWORD rop) {
  PaintGeometry geometry;
  if (!geometry.resolve(bitmap, request)) return KSUCCESS;
  const int deviceBits = deviceDepth(dc);
  PaintMode mode = paintModeOf(bitmap, deviceBits, currentSettings().displayMode);
  if (isSecondGray(mode) && geometry.isSameSize()) mode = PaintMode::asStored;

  const BitmapLock lock(bitmap);
  Paint paint(dc, bitmap, geometry, rop);
  if (isCoverage(mode)) return paint.paintGray(isInverted(mode));
  PaintRows rows(bitmap);
  return paint.paintLines(rows, mode == PaintMode::dithered, deviceBits);
}

int paintHeldRows(HDC dc, BitmapHandle& bitmap, const PaintRequest& request, DWORD rop, const uint8_t* rows, int first,
                  int count) {
  const RECT held = {0, first, bitmap.Width, first + count};
  PaintRequest limited = request;
  limited.storedRows = &held;
  PaintGeometry geometry;
  if (!geometry.resolve(bitmap, limited)) return KSUCCESS;
  const int deviceBits = deviceDepth(dc);
  // Rows at hand are never turned into grey levels.
  const PaintMode mode = paintModeOf(bitmap, deviceBits, currentSettings().displayMode);
  Paint paint(dc, bitmap, geometry, rop);
  PaintRows heldRows(bitmap, rows, static_cast<unsigned>(first));
  return paint.paintLines(heldRows, mode == PaintMode::dithered, deviceBits);
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_PaintDC(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                         const RECT* destination, const RECT* destinationClip, DWORD rop) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (dc == nullptr || destination == nullptr) return KERR_BAD_PARAMETER;
  return paintBitmap(dc, *bitmap, {source, sourceClip, destination, destinationClip, nullptr}, rop);
}

int ZAVO_CALL Zv_PaintDCBuffer(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                               const RECT* destination, const RECT* destinationClip, DWORD rop,
                               const unsigned char* rows, int firstRow, int rowCount) {
  if (bitmap == nullptr || rows == nullptr) return KERR_BAD_BITMAP;
  const bool runs = rowCount < 0;
  if (dc == nullptr || destination == nullptr || !isSupportedDepth(bitmap->BitsPerPixel)) return KERR_BAD_PARAMETER;
  if (runs && bitmap->BitsPerPixel != 1) return KERR_BAD_PARAMETER;
  // Rows outside the bitmap are not painted; they are cut off here so that row numbers cannot overflow.
  const int64_t count = runs ? -int64_t{rowCount} : int64_t{rowCount};
  const int64_t held = std::min(count, int64_t{bitmap->Height} - firstRow);
  const int64_t before = firstRow < 0 ? -int64_t{firstRow} : 0;
  if (held <= before || bitmap->Width <= 0) return KSUCCESS;

  OsBlock<uint8_t> expanded;
  if (runs) {
    if (held > INT32_MAX) return KERR_NO_MEMORY;
    expanded = OsBlock<uint8_t>::allocate(uint64_t{bitmap->BytesPerLine} * static_cast<unsigned>(held));
    if (!expanded) return KERR_NO_MEMORY;
    Zv_ExpandRows(rows, expanded.get(), static_cast<unsigned>(bitmap->Width), static_cast<unsigned>(held));
    rows = expanded.get();
  }
  rows += static_cast<size_t>(before) * bitmap->BytesPerLine;
  const PaintRequest request = {source, sourceClip, destination, destinationClip, nullptr};
  return paintHeldRows(dc, *bitmap, request, rop, rows, static_cast<int>(firstRow + before),
                       static_cast<int>(held - before));
}
