// What a colour reduction makes of a bitmap: depth, colour order, palette.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/dither_targets.h"
#include "core/memory.h"

namespace zavo {

// The caller's wishes, as Zv_ColorResBitmap takes them.
struct ReductionRequest {
  int bitsPerPixel;  // 0: 8-bit grey
  unsigned options;  // COLORRES_
  const RGBQUAD* palette;
  unsigned colorCount;
};

struct ReductionTarget {
  int bitsPerPixel = 0;     // 1 to 8, 16, 24, 32
  int colorOrder = 0;       // of 16 bits and up
  bool gray = false;        // the palette is an even grey ramp, and colours count by their brightness
  int kind = noFixedKind;   // of the palette, for dithering
  unsigned colorCount = 0;  // palette entries in use; the rest up to 1 << bitsPerPixel is black
  RGBQUAD palette[256] = {};
  OsBlock<uint32_t> inverseMap;  // of an optimised palette: index + 1 for every 15-bit colour that occurs
};

// KSUCCESS; KERR_BAD_BPP; KERR_BAD_PARAMETER for options that contradict each other and a given palette that is
// missing or larger than the depth.
[[nodiscard]] int checkReduction(const ReductionRequest& request);

// Fills in the target of a checked request for one bitmap. KSUCCESS, or the code of the failed palette choice.
[[nodiscard]] int chooseTarget(ReductionTarget& target, const ReductionRequest& request, BitmapHandle& source);

// The bitmap gets an optimised palette; of a list, all bitmaps for which this holds share one.
[[nodiscard]] bool needsOptimised(const ReductionRequest& request, const BitmapHandle& source);

// Fills in the target with an optimised palette for all bitmaps of a list.
[[nodiscard]] int chooseSharedTarget(ReductionTarget& target, const ReductionRequest& request, BitmapListHandle list);

}  // namespace zavo
