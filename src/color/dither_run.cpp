// The life of a dither run: its record hangs in the bitmap's handle from start to stop.
#include <zavo.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "color/conversion.h"
#include "color/dither.h"
#include "color/dither_rows.h"
#include "core/memory.h"
#include "core/status.h"

namespace zavo {
namespace {

bool isDiffusion(int method) {
  return method >= 1 && method <= diffusionMethods;
}

bool isOrdered(int method) {
  return method == 7 || method == 8;
}

bool isGraySource(const DitherSource& source) {
  if (source.bitsPerPixel == 0) return true;
  if (source.bitsPerPixel > 8) return false;
  return std::all_of(source.palette, source.palette + (size_t{1} << source.bitsPerPixel), isGray);
}

// One block for all rows: the fetched pixels, the indexes, the sums, and the error rows with their margins, all zero.
bool takeRows(DitherRun& run, bool diffusion) {
  const uint64_t width = run.width;
  const unsigned lanes = run.gray ? 1 : 4;
  const uint64_t pixelBytes = (width * lanes + 3) / 4 * 4;
  const uint64_t indexBytes = (width + 3) / 4 * 4;
  const uint64_t sumBytes = diffusion ? width * lanes * sizeof(int32_t) : 0;  // for the longest
  const uint64_t errorBytes = diffusion ? (width + uint64_t{2} * ErrorRows::margin) * lanes * sizeof(int16_t) : 0;
  auto block = OsBlock<uint8_t>::allocateZeroed(pixelBytes + indexBytes + sumBytes + ErrorRows::count * errorBytes);
  if (!block) return false;

  run.work = block.release();
  uint8_t* next = run.work;
  run.pixels = next;
  run.indexes = next += pixelBytes;
  run.sums = next += indexBytes;
  next += sumBytes;
  for (auto& row : run.errors.rows) {
    row = reinterpret_cast<int16_t*>(next) + ErrorRows::margin * lanes;
    next += errorBytes;
  }
  return true;
}

// How pixels find their entries, and who packs them. Grey to black and white packs as it goes.
void chooseQuantise(DitherRun& run, bool diffusion, int bits) {
  run.pack = bits == 8 ? nullptr : packFunction(bits);
  if (!run.gray) {
    const QuantiseFunction vector = vectorQuantise(run.target.kind);
    run.quantise = vector != nullptr ? vector : plainQuantise(run.target.kind);
  } else if (run.target.kind == noFixedKind) {
    run.quantise = plainQuantiseGray;
  } else if (run.target.kind == fixedKind(1) && bits == 1 && !diffusion) {
    run.quantise = packTopBits;
    run.pack = nullptr;
  } else {
    run.quantise = vectorQuantiseGray;
  }
}

void chooseDither(DitherRun& run, int method) {
  if (run.gray) setGrayTable(run, isDiffusion(method) ? kernels[method - 1].ahead[0] : 0);
  run.dither = run.quantise;
  if (isOrdered(method)) {
    setOrderedOffsets(run.offsets, method, levelCode(run.target), run.gray);
    run.dither = ditherOrdered;
  } else if (isDiffusion(method)) {
    run.dither = run.gray ? grayDiffusion(method) : colorDiffusion(method, run.target.kind);
  }
}

// A run in the making.
int fillRun(DitherRun& run, const DitherSource& source, const DitherPalette& palette) {
  setDitherTarget(run.target, palette.kind, palette.colors, palette.count);
  run.gray = isGrayTarget(run.target) && isGraySource(source);
  run.fetch = RowConverter();
  const int fetched = run.gray ? 0 : 32;
  const int status =
      run.fetch.prepare(source.bitsPerPixel, fetched, source.colorOrder, ORDER_BLUE_FIRST, source.palette, nullptr);
  if (status != KSUCCESS) return status;
  run.width = static_cast<unsigned>(source.width);
  if (palette.kind == noFixedKind) {
    run.target.match = OsBlock<uint16_t>::allocateZeroed(matchTableEntries).release();
    if (run.target.match == nullptr) return KERR_NO_MEMORY;
  }
  const bool diffusion = isDiffusion(source.method);
  if (!takeRows(run, diffusion)) return KERR_NO_MEMORY;
  chooseQuantise(run, diffusion, palette.bitsPerPixel);
  chooseDither(run, source.method);
  return KSUCCESS;
}

// The run of an exported start, which leaves its record in the handle.
int openForBitmap(DitherRun*& run, const BitmapHandle& bitmap, const RGBQUAD* palette, unsigned colorCount) {
  RGBQUAD sourcePalette[256];
  if (bitmap.BitsPerPixel <= 8) readPaletteOrFixed(bitmap, sourcePalette);
  const int bits = std::max(static_cast<int>(std::bit_width(colorCount - 1)), 1);
  const int kind = palette == nullptr ? fixedKind(bits) : fixedKindOf(palette, colorCount);
  return openDitherRun(run,
                       {.width = bitmap.Width,
                        .bitsPerPixel = bitmap.BitsPerPixel,
                        .colorOrder = colorOrderOf(bitmap),
                        .palette = sourcePalette,
                        .method = bitmap.DitheringMethod},
                       {.kind = kind, .colors = palette, .count = colorCount, .bitsPerPixel = bits});
}

}  // namespace

int openDitherRun(DitherRun*& run, const DitherSource& source, const DitherPalette& palette) {
  run = nullptr;
  if (source.width < 0) return KERR_BAD_PARAMETER;
  OwnedDitherRun made(OsBlock<DitherRun>::allocateZeroed(1).release());
  if (!made) return KERR_NO_MEMORY;
  const int status = fillRun(*made.get(), source, palette);
  if (status == KSUCCESS) run = made.release();
  return status;
}

void ditherRow(DitherRun& run, uint8_t* destination, const uint8_t* source) {
  const uint8_t* pixels = source;
  if (!run.fetch.changesNothing()) {
    run.fetch.convert(run.pixels, source, run.width);
    pixels = run.pixels;
  }
  if (run.pack == nullptr) {
    run.dither(run, destination, pixels);
  } else {
    run.dither(run, run.indexes, pixels);
    run.pack(destination, run.indexes, 0, run.width);
  }
}

void closeDitherRun(DitherRun* run) {
  if (run == nullptr) return;
  OsBlock<uint8_t>(run->work).reset();
  OsBlock<uint16_t>(run->target.match).reset();
  OsBlock<DitherRun>(run).reset();
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_StartDithering(BitmapHandle* bitmap, const RGBQUAD* palette, unsigned colorCount) {
  if (const int status = Zv_StopDithering(bitmap); status != KSUCCESS) return status;
  if (colorCount == 0 || colorCount > 256 || !isSupportedDepth(bitmap->BitsPerPixel)) return KERR_BAD_PARAMETER;
  DitherRun* run = nullptr;
  if (const int status = openForBitmap(run, *bitmap, palette, colorCount); status != KSUCCESS) return status;
  bitmap->DitherState = run;
  return KSUCCESS;
}

int ZAVO_CALL Zv_DitherLine(BitmapHandle* bitmap, const unsigned char* source, unsigned char* destination) {
  if (bitmap == nullptr || bitmap->DitherState == nullptr || source == nullptr || destination == nullptr) {
    return KERR_BAD_PARAMETER;
  }
  ditherRow(*static_cast<DitherRun*>(bitmap->DitherState), destination, source);
  return KSUCCESS;
}

int ZAVO_CALL Zv_StopDithering(BitmapHandle* bitmap) {
  if (bitmap == nullptr) return KERR_BAD_PARAMETER;
  closeDitherRun(static_cast<DitherRun*>(bitmap->DitherState));
  bitmap->DitherState = nullptr;
  return KSUCCESS;
}
