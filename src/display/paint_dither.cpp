// Two ways of dithering (ordered, error diffusion) for four targets. A target says how an adjusted pixel becomes an
// index; all but black and white do so channel by channel, which error diffusion makes use of.
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

// Entries by their bright channels: only black and the bright entries 9 to 15 are ever chosen, on purpose.
constexpr uint8_t brightest[8] = {0, 9, 10, 11, 12, 13, 14, 15};

struct Colors16 {
  static unsigned index(unsigned blue, unsigned green, unsigned red) {
    return brightest[(red >= 128 ? 1u : 0) | (green >= 128 ? 2u : 0) | (blue >= 128 ? 4u : 0)];
  }
  static int term(int threshold) { return threshold - 127; }  // keeps 0 and 255 what they are
};

unsigned (*indexFunction(int outputBits, bool cube))(unsigned blue, unsigned green, unsigned red) {
  if (outputBits == 4) return &Colors16::index;
  return cube ? &ColorCube::index : &Colors332::index;
}

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
  errors_ = OsBlock<Triple>::allocateZeroed(uint64_t{count} + 1);
  const bool steps = outputBits == 1 || buildSteps(indexFunction(outputBits, cube_));
  return errors_ && steps ? KSUCCESS : KERR_NO_MEMORY;
}

void PaintDitherer::run(uint8_t* packed, const uint8_t* bgr) {
  (this->*run_)(packed, bgr);
  ++(place_.turned ? place_.x : place_.y);
}

void PaintDitherer::chooseWorker(bool ordered) {
  if (!ordered) {
    run_ = outputBits_ == 1 ? &PaintDitherer::runDiffusedBits : &PaintDitherer::runDiffused;
  } else if (outputBits_ == 1) {
    run_ = &PaintDitherer::runOrderedBits;
  } else if (outputBits_ == 4) {
    run_ = &PaintDitherer::runOrdered<Colors16>;
  } else {
    run_ = cube_ ? &PaintDitherer::runOrdered<ColorCube> : &PaintDitherer::runOrdered<Colors332>;
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

// What a channel alone makes of its value and the error carried to it, which together stay within -255 to 510.
bool PaintDitherer::buildSteps(IndexFunction index) {
  steps_ = OsBlock<Step>::allocate(uint64_t{levelCount} * 3);
  if (!steps_) return false;
  for (unsigned i = 0; i < levelCount; ++i) {
    const unsigned level = levels_[i];
    const unsigned indexes[3] = {index(level, 0, 0), index(0, level, 0), index(0, 0, level)};
    const uint8_t chosen[3] = {palette_[indexes[0]].rgbBlue, palette_[indexes[1]].rgbGreen,
                               palette_[indexes[2]].rgbRed};
    for (unsigned channel = 0; channel < 3; ++channel) {
      steps_[channel * levelCount + i] = {
          static_cast<int16_t>(levels_[i] - chosen[channel]),
          static_cast<uint8_t>(outputBits_ == 4 ? indexes[channel] & 7 : indexes[channel])};
    }
  }
  return true;
}

// Errors go on in sixteenths: 7 to the next pixel, 3, 5 and 1 to the row below. errors_[x + 1] is what pixel x is given
// from above; what it gives to the row below is complete, and stored in errors_[x], when the next pixel is done.
void PaintDitherer::runDiffused(uint8_t* packed, const uint8_t* bgr) {
  const Step* blues = steps_.get() + levelsBase;
  const Step* greens = blues + levelCount;
  const Step* reds = greens + levelCount;
  Triple* above = errors_.get() + 1;
  Triple error = {};
  Triple below = {};  // of the pixel before, so far
  for (unsigned x = 0; x < count_; ++x, bgr += 3, ++above) {
    const Step& blue = blues[bgr[0] + (above->blue + 7 * error.blue) / 16];
    const Step& green = greens[bgr[1] + (above->green + 7 * error.green) / 16];
    const Step& red = reds[bgr[2] + (above->red + 7 * error.red) / 16];
    indexes_[x] = static_cast<uint8_t>(blue.part + green.part + red.part);
    above[-1] = {below.blue + 3 * blue.error, below.green + 3 * green.error, below.red + 3 * red.error};
    below = {error.blue + 5 * blue.error, error.green + 5 * green.error, error.red + 5 * red.error};
    error = {blue.error, green.error, red.error};
  }
  above[-1] = below;
  if (outputBits_ == 4) {
    for (unsigned x = 0; x < count_; ++x) indexes_[x] = brightest[indexes_[x]];
  }
  packFunction(outputBits_)(packed, indexes_.get(), 0, count_);
}

// The same with one index for all channels, by their brightness.
void PaintDitherer::runDiffusedBits(uint8_t* packed, const uint8_t* bgr) {
  const uint8_t* levels = levels_ + levelsBase;
  Triple* above = errors_.get() + 1;
  Triple error = {};
  Triple below = {};
  for (unsigned x = 0; x < count_; ++x, bgr += 3, ++above) {
    const int blue = clampLevel(bgr[0] + (above->blue + 7 * error.blue) / 16);
    const int green = clampLevel(bgr[1] + (above->green + 7 * error.green) / 16);
    const int red = clampLevel(bgr[2] + (above->red + 7 * error.red) / 16);
    const unsigned brightness =
        luminance(static_cast<unsigned>(red), static_cast<unsigned>(green), static_cast<unsigned>(blue));
    const uint8_t index = levels[brightness] >> 7;
    const int chosen = index * 255;
    indexes_[x] = index;
    const Triple before = error;
    error = {blue - chosen, green - chosen, red - chosen};
    above[-1] = {below.blue + 3 * error.blue, below.green + 3 * error.green, below.red + 3 * error.red};
    below = {before.blue + 5 * error.blue, before.green + 5 * error.green, before.red + 5 * error.red};
  }
  above[-1] = below;
  packFunction(1)(packed, indexes_.get(), 0, count_);
}

}  // namespace zavo
