// Two ways of dithering (ordered, error diffusion) for four targets, written once each and combined as templates: a
// target says how an adjusted pixel becomes an index.
#include "display/paint_dither.h"

#include <algorithm>

#include "color/palettes.h"
#include "core/packed_pixels.h"

namespace zavo {
namespace {

constexpr int levelsBase = 256;  // of the level table's entry for 0

// --- Targets: index of adjusted channels, and the ordered dither term for a matrix value

struct Colors332 {
  static unsigned index(unsigned blue, unsigned green, unsigned red) {
    return (red & 0xE0) | (green >> 5) << 2 | blue >> 6;
  }
  static int term(int threshold) { return (threshold >> 3) - 16; }
};

struct ColorCube {
  static unsigned index(unsigned blue, unsigned green, unsigned red) {
    return 36 * (red / 51) + 6 * (green / 51) + blue / 51;
  }
  static int term(int threshold) { return threshold / 6 - 21; }
};

// Only black and the bright entries 9 to 15 are ever chosen, on purpose.
struct Colors16 {
  static unsigned index(unsigned blue, unsigned green, unsigned red) {
    const unsigned bright = (red >= 128 ? 1u : 0) | (green >= 128 ? 2u : 0) | (blue >= 128 ? 4u : 0);
    return bright != 0 ? bright + 8 : 0;
  }
  static int term(int threshold) { return threshold - 127; }  // keeps 0 and 255 what they are
};

// A marker: single bits compare brightness, see runOrderedBits and runDiffused.
struct BlackWhite {};

int clampLevel(int level) {
  return std::clamp(level, 0, 255);
}

}  // namespace

int PaintDitherer::prepare(const ThreadSettings& settings, int outputBits, unsigned count, const DitherPlace& place) {
  const bool ordered = (settings.displayMode & PAINT_ORDERED_DITHER) != 0;
  outputBits_ = outputBits;
  cube_ = outputBits == 8 && (settings.displayMode & PAINT_CUBE_PALETTE) != 0;
  clustered_ = (settings.displayMode & PAINT_CLUSTERED_DOT) != 0;
  count_ = count;
  place_ = place;
  palette_ = cube_ ? cubePalette() : fixedPalette(outputBits);
  buildLevels(settings.paintAdjustTable);
  chooseWorker(ordered);
  indexes_ = OsBlock<uint8_t>::allocate(count);
  if (!indexes_) return KERR_NO_MEMORY;
  if (ordered) return KSUCCESS;
  errors_ = OsBlock<Triple>::allocateZeroed(count);
  return errors_ ? KSUCCESS : KERR_NO_MEMORY;
}

void PaintDitherer::run(uint8_t* packed, const uint8_t* bgr) {
  (this->*run_)(packed, bgr);
  ++(place_.turned ? place_.x : place_.y);
}

void PaintDitherer::chooseWorker(bool ordered) {
  if (outputBits_ == 1) {
    run_ = ordered ? &PaintDitherer::runOrderedBits : &PaintDitherer::runDiffused<BlackWhite>;
  } else if (outputBits_ == 4) {
    run_ = ordered ? &PaintDitherer::runOrdered<Colors16> : &PaintDitherer::runDiffused<Colors16>;
  } else if (cube_) {
    run_ = ordered ? &PaintDitherer::runOrdered<ColorCube> : &PaintDitherer::runDiffused<ColorCube>;
  } else {
    run_ = ordered ? &PaintDitherer::runOrdered<Colors332> : &PaintDitherer::runDiffused<Colors332>;
  }
}

// Clamping and the adjustment are one lookup.
void PaintDitherer::buildLevels(const uint8_t adjust[256]) {
  for (int i = 0; i < static_cast<int>(sizeof levels_); ++i) levels_[i] = adjust[clampLevel(i - levelsBase)];
}

template <typename Target>
void PaintDitherer::runOrdered(uint8_t* packed, const uint8_t* bgr) {
  const uint8_t* levelsAt[8];
  for (unsigned k = 0; k < 8; ++k) {
    levelsAt[k] = levels_ + levelsBase + Target::term(static_cast<int>(threshold(dispersedMatrix, k)));
  }
  for (unsigned x = 0; x < count_; ++x, bgr += 3) {
    const uint8_t* levels = levelsAt[x & 7];
    indexes_[x] = static_cast<uint8_t>(Target::index(levels[bgr[0]], levels[bgr[1]], levels[bgr[2]]));
  }
  packFunction(outputBits_)(packed, indexes_.get(), 0, count_);
}

void PaintDitherer::runOrderedBits(uint8_t* packed, const uint8_t* bgr) {
  const ThresholdMatrix& matrix = clustered_ ? clusteredMatrix : dispersedMatrix;
  uint8_t thresholds[8];
  for (unsigned k = 0; k < 8; ++k) thresholds[k] = static_cast<uint8_t>(threshold(matrix, k));
  const uint8_t* levels = levels_ + levelsBase;
  for (unsigned x = 0; x < count_; ++x, bgr += 3) indexes_[x] = levels[luminance(bgr[2], bgr[1], bgr[0])];
  thresholdRow(packed, indexes_.get(), count_, thresholds);
}

// Errors go on in sixteenths: 7 to the next pixel, 3, 5 and 1 to the row below. The slot of a pixel is read for this
// row and at once begins to gather for the next; what lies below-right waits in `ahead` until its slot is read.
template <typename Target>
void PaintDitherer::runDiffused(uint8_t* packed, const uint8_t* bgr) {
  const uint8_t* levels = levels_ + levelsBase;
  Triple right = {};  // 7 shares, to this pixel
  Triple ahead = {};  // 1 share, for the slot of this pixel in the next row
  for (unsigned x = 0; x < count_; ++x, bgr += 3) {
    Triple& slot = errors_[x];
    const int blue = clampLevel(bgr[0] + (slot.blue + right.blue) / 16);
    const int green = clampLevel(bgr[1] + (slot.green + right.green) / 16);
    const int red = clampLevel(bgr[2] + (slot.red + right.red) / 16);
    Triple error;
    unsigned index;
    if constexpr (std::is_same_v<Target, BlackWhite>) {
      index =
          levels[luminance(static_cast<unsigned>(red), static_cast<unsigned>(green), static_cast<unsigned>(blue))] >> 7;
      const int chosen = index != 0 ? 255 : 0;
      error = {blue - chosen, green - chosen, red - chosen};
    } else {
      index = Target::index(levels[blue], levels[green], levels[red]);
      const RGBQUAD& chosen = palette_[index];
      error = {levels[blue] - chosen.rgbBlue, levels[green] - chosen.rgbGreen, levels[red] - chosen.rgbRed};
    }
    indexes_[x] = static_cast<uint8_t>(index);
    slot = {ahead.blue + 5 * error.blue, ahead.green + 5 * error.green, ahead.red + 5 * error.red};
    if (x != 0) {
      Triple& left = errors_[x - 1];
      left = {left.blue + 3 * error.blue, left.green + 3 * error.green, left.red + 3 * error.red};
    }
    right = {7 * error.blue, 7 * error.green, 7 * error.red};
    ahead = error;
  }
  packFunction(outputBits_)(packed, indexes_.get(), 0, count_);
}

}  // namespace zavo
