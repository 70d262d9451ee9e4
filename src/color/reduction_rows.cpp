// Rows of a colour reduction in stages: fetch to blue, green, red (or to a grey level), find the index, pack. Where the
// source has a palette, a map from index to index does it all.
#include "color/reduction_rows.h"

#include <algorithm>
#include <cstring>

#include "color/palettes.h"
#include "core/settings.h"
#include "core/sizes.h"

namespace zavo {
namespace {

// The target has an entry for every colour that the source can have.
bool holdsColors(const ReductionTarget& target, const RGBQUAD* palette, int sourceBits) {
  if (target.gray && target.bitsPerPixel == 8) return true;
  if (sourceBits > 8) return false;
  return std::all_of(palette, palette + (size_t{1} << sourceBits), [&](RGBQUAD color) {
    if (target.gray) {
      color.rgbRed = luminance(color.rgbRed, color.rgbGreen, color.rgbBlue);
      color.rgbGreen = color.rgbBlue = color.rgbRed;
    }
    return std::any_of(target.palette, target.palette + target.colorCount,
                       [&](const RGBQUAD& entry) { return sameColor(entry, color); });
  });
}

}  // namespace

int ReductionRows::prepare(const BitmapHandle& source, const ReductionTarget& target, int method) {
  width_ = static_cast<unsigned>(source.Width);
  sourceBits_ = source.BitsPerPixel;
  targetBits_ = target.bitsPerPixel;
  if (sourceBits_ <= 8) readPaletteOrFixed(source, palette_);
  if (target.bitsPerPixel > 8) return planConversion(source, target.bitsPerPixel, target.colorOrder);

  pack_ = packFunction(targetBits_);
  indexes_ = OsBlock<uint8_t>::allocate(width_);
  if (!indexes_) return KERR_NO_MEMORY;
  if (method != 0 && !holdsColors(target, palette_, sourceBits_)) return planDither(source, target, method);
  if (target.gray) return planGray(source, target);
  return sourceBits_ <= 8 ? planMap(target) : planMatch(source, target);
}

int ReductionRows::planConversion(const BitmapHandle& source, int bits, int order) {
  run_ = &ReductionRows::convertRow;
  return converter_.prepare(sourceBits_, bits, colorOrderOf(source), order, palette_, nullptr);
}

int ReductionRows::planGray(const BitmapHandle& source, const ReductionTarget& target) {
  if (const int status = planConversion(source, 0, 0); status != KSUCCESS) return status;
  const bool identity = buildPaletteMap(map_, nullptr, 0, target.palette, target.colorCount);
  if (!identity) run_ = &ReductionRows::grayRow;
  return KSUCCESS;
}

int ReductionRows::planMap(const ReductionTarget& target) {
  const bool identity = buildPaletteMap(map_, palette_, 1u << sourceBits_, target.palette, target.colorCount);
  unpack_ = unpackFunction(sourceBits_);
  run_ = identity && sourceBits_ == targetBits_ ? &ReductionRows::copyRow : &ReductionRows::mapRow;
  return KSUCCESS;
}

int ReductionRows::planMatch(const BitmapHandle& source, const ReductionTarget& target) {
  pixels_ = OsBlock<uint8_t>::allocate(uint64_t{width_} * 4);
  if (!pixels_) return KERR_NO_MEMORY;
  if (const int status = planConversion(source, 32, ORDER_BLUE_FIRST); status != KSUCCESS) return status;
  matchTable_ = target.inverseMap ? target.inverseMap.get() : currentSettings().userMatchTable;
  colorCount_ = target.colorCount;
  run_ = matchTable_ != nullptr ? &ReductionRows::matchRow<true> : &ReductionRows::matchRow<false>;
  return cells_.open(target.palette, target.colorCount);
}

// A grey target takes brightness: colours are dithered as the grey they count for.
int ReductionRows::planDither(const BitmapHandle& source, const ReductionTarget& target, int method) {
  if (target.gray) {
    if (const int status = planConversion(source, 0, 0); status != KSUCCESS) return status;
  }
  run_ = target.gray ? &ReductionRows::ditherGray : &ReductionRows::ditherColors;
  DitherRun* run = nullptr;
  const int status = openDitherRun(
      run,
      {.width = source.Width,
       .bitsPerPixel = target.gray ? 0 : sourceBits_,
       .colorOrder = colorOrderOf(source),
       .palette = palette_,
       .method = method},
      {.kind = target.kind, .colors = target.palette, .count = target.colorCount, .bitsPerPixel = targetBits_});
  dither_.reset(run);
  return status;
}

void ReductionRows::copyRow(uint8_t* destination, const uint8_t* source) {
  memcpy(destination, source, static_cast<size_t>(packedBytesFor(width_, static_cast<unsigned>(sourceBits_))));
}

void ReductionRows::convertRow(uint8_t* destination, const uint8_t* source) {
  converter_.convert(destination, source, width_);
}

void ReductionRows::grayRow(uint8_t* destination, const uint8_t* source) {
  converter_.convert(indexes_.get(), source, width_);
  packMapped(destination);
}

void ReductionRows::mapRow(uint8_t* destination, const uint8_t* source) {
  unpack_(indexes_.get(), source, 0, width_);
  packMapped(destination);
}

void ReductionRows::ditherColors(uint8_t* destination, const uint8_t* source) {
  ditherRow(*dither_.get(), destination, source);
}

void ReductionRows::ditherGray(uint8_t* destination, const uint8_t* source) {
  converter_.convert(indexes_.get(), source, width_);
  ditherRow(*dither_.get(), destination, indexes_.get());
}

void ReductionRows::packMapped(uint8_t* destination) {
  for (unsigned x = 0; x < width_; ++x) indexes_[x] = map_[indexes_[x]];
  pack_(destination, indexes_.get(), 0, width_);
}

// A missing entry of the table, or one made for a larger palette, is searched for.
template <bool byTable>
void ReductionRows::matchRow(uint8_t* destination, const uint8_t* source) {
  converter_.convert(pixels_.get(), source, width_);
  const uint8_t* pixel = pixels_.get();
  for (unsigned x = 0; x < width_; ++x, pixel += 4) {
    const unsigned blue = pixel[0], green = pixel[1], red = pixel[2];
    const uint32_t entry = byTable ? matchTable_[colorKey(red, green, blue)] - 1 : colorCount_;
    indexes_[x] = entry < colorCount_ ? static_cast<uint8_t>(entry) : cells_.search(red, green, blue);
  }
  pack_(destination, indexes_.get(), 0, width_);
}

}  // namespace zavo
