// Choosing depth, order and palette of a colour reduction.
#include "color/reduction_target.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "color/optimised_palette.h"
#include "color/palettes.h"
#include "core/status.h"

namespace zavo {
namespace {

constexpr unsigned paletteOptions =
    COLORRES_GIVEN_PALETTE | COLORRES_FIXED_PALETTE | COLORRES_OPTIMISED_PALETTE | COLORRES_GRAY_PALETTE;

bool hasPalette(int bitsPerPixel) {
  return bitsPerPixel >= 1 && bitsPerPixel <= 8;
}

// Levels are rounded down, as Zv_CreateGrayPalette rounds them.
void setGrayPalette(ReductionTarget& target) {
  const unsigned last = (1u << target.bitsPerPixel) - 1;
  for (unsigned i = 0; i <= last; ++i) {
    const auto level = static_cast<uint8_t>(i * 255 / last);
    target.palette[i] = {level, level, level, 0};
  }
  target.colorCount = last + 1;
  target.kind = fixedKindOf(target.palette, target.colorCount);
  target.gray = true;
}

// A part of a fixed palette is not that palette: its dithering would give indexes beyond the part.
void setPalette(ReductionTarget& target, const RGBQUAD* palette, unsigned count) {
  memcpy(target.palette, palette, count * sizeof(RGBQUAD));
  target.colorCount = count;
  target.kind = count > 1 && std::has_single_bit(count) ? fixedKindOf(palette, count) : noFixedKind;
}

// The six-level cube goes by its number of colours.
void setFixedPalette(ReductionTarget& target, unsigned colorCount) {
  if (target.bitsPerPixel == 8 && colorCount == cubeColors) {
    setPalette(target, cubePalette(), cubeColors);
    target.kind = cubeKind;
  } else {
    setPalette(target, fixedPalette(target.bitsPerPixel), 1u << target.bitsPerPixel);
  }
}

unsigned optimisedCount(const ReductionTarget& target, unsigned colorCount) {
  const unsigned full = 1u << target.bitsPerPixel;
  return colorCount == 0 ? full : std::min(colorCount, full);
}

// An optimised palette may have fewer colours than asked for: those it does not have are zero, and only the first
// entry of a sorted palette can be black.
void countColors(ReductionTarget& target, unsigned wanted) {
  const auto isBlack = [](const RGBQUAD& color) { return (color.rgbRed | color.rgbGreen | color.rgbBlue) == 0; };
  while (wanted > 1 && isBlack(target.palette[wanted - 1])) --wanted;
  target.colorCount = wanted;
}

int setOptimisedPalette(ReductionTarget& target, unsigned colorCount, BitmapHandle& source) {
  const unsigned wanted = optimisedCount(target, colorCount);
  if (const int status = optimisePalette(target.palette, wanted, &target.inverseMap, &source); status != KSUCCESS) {
    return status;
  }
  countColors(target, wanted);
  return KSUCCESS;
}

// Everything but the palette.
void setFormat(ReductionTarget& target, const ReductionRequest& request) {
  target.bitsPerPixel = request.bitsPerPixel == 0 ? 8 : request.bitsPerPixel;
  const bool blueFirst = (request.options & COLORRES_BLUE_FIRST) != 0;
  target.colorOrder = blueFirst && target.bitsPerPixel > 8 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
}

}  // namespace

int checkReduction(const ReductionRequest& request) {
  if (request.bitsPerPixel != 0 && !isSupportedDepth(request.bitsPerPixel)) return KERR_BAD_BPP;
  if (!hasPalette(request.bitsPerPixel)) return KSUCCESS;
  const unsigned choice = request.options & paletteOptions;
  if (std::popcount(choice) > 1) return KERR_BAD_PARAMETER;
  if (choice != COLORRES_GIVEN_PALETTE) return KSUCCESS;
  const bool fits = request.colorCount >= 1 && request.colorCount <= 1u << request.bitsPerPixel;
  return request.palette != nullptr && fits ? KSUCCESS : KERR_BAD_PARAMETER;
}

bool needsOptimised(const ReductionRequest& request, const BitmapHandle& source) {
  if (!hasPalette(request.bitsPerPixel)) return false;
  const unsigned choice = request.options & paletteOptions;
  return choice == COLORRES_OPTIMISED_PALETTE || (choice == 0 && source.BitsPerPixel > request.bitsPerPixel);
}

int chooseTarget(ReductionTarget& target, const ReductionRequest& request, BitmapHandle& source) {
  setFormat(target, request);
  if (target.bitsPerPixel > 8) return KSUCCESS;
  if (request.bitsPerPixel == 0) {
    setGrayPalette(target);
    return KSUCCESS;
  }
  if (needsOptimised(request, source)) return setOptimisedPalette(target, request.colorCount, source);
  switch (request.options & paletteOptions) {
    case COLORRES_GIVEN_PALETTE:
      setPalette(target, request.palette, request.colorCount);
      break;
    case COLORRES_FIXED_PALETTE:
      setFixedPalette(target, request.colorCount);
      break;
    case COLORRES_GRAY_PALETTE:
      setGrayPalette(target);
      break;
    default:
      readPaletteOrFixed(source, target.palette);
      target.colorCount = 1u << source.BitsPerPixel;
  }
  return KSUCCESS;
}

int chooseSharedTarget(ReductionTarget& target, const ReductionRequest& request, BitmapListHandle list) {
  setFormat(target, request);
  const unsigned wanted = optimisedCount(target, request.colorCount);
  if (const int status = optimiseListPalette(target.palette, wanted, &target.inverseMap, list); status != KSUCCESS) {
    return status;
  }
  countColors(target, wanted);
  return KSUCCESS;
}

}  // namespace zavo
