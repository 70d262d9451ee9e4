// Rows of a colour reduction in stages: fetch to blue, green, red (or to a grey level), find the index, pack. Where the
// source has a palette, a map from index to index does it all.
#include "color/reduction_rows.h"

#include <cstring>

#include "color/palettes.h"
#include "core/settings.h"
#include "core/sizes.h"

namespace zavo {
namespace {

// What is not blue first is red first.
int colorOrderOf(const BitmapHandle& bitmap) {
  return bitmap.ColorOrder == ORDER_BLUE_FIRST ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
}

}  // namespace

int ReductionRows::prepare(const BitmapHandle& source, const ReductionTarget& target) {
  width_ = static_cast<unsigned>(source.Width);
  sourceBits_ = source.BitsPerPixel;
  targetBits_ = target.bitsPerPixel;
  if (target.bitsPerPixel > 8) return planConversion(source, target.bitsPerPixel, target.colorOrder);

  pack_ = packFunction(targetBits_);
  indexes_ = OsBlock<uint8_t>::allocate(width_);
  if (!indexes_) return KERR_NO_MEMORY;
  if (target.gray) return planGray(source, target);
  return sourceBits_ <= 8 ? planMap(source, target) : planMatch(source, target);
}

int ReductionRows::planConversion(const BitmapHandle& source, int bits, int order) {
  RGBQUAD palette[256];
  if (sourceBits_ <= 8) readPaletteOrFixed(source, palette);
  run_ = &ReductionRows::convertRow;
  return converter_.prepare(sourceBits_, bits, colorOrderOf(source), order, palette, nullptr);
}

int ReductionRows::planGray(const BitmapHandle& source, const ReductionTarget& target) {
  if (const int status = planConversion(source, 0, 0); status != KSUCCESS) return status;
  const bool identity = buildPaletteMap(map_, nullptr, 0, target.palette, target.colorCount);
  if (!identity) run_ = &ReductionRows::grayRow;
  return KSUCCESS;
}

int ReductionRows::planMap(const BitmapHandle& source, const ReductionTarget& target) {
  RGBQUAD palette[256];
  readPaletteOrFixed(source, palette);
  const bool identity = buildPaletteMap(map_, palette, 1u << sourceBits_, target.palette, target.colorCount);
  unpack_ = unpackFunction(sourceBits_);
  run_ = identity && sourceBits_ == targetBits_ ? &ReductionRows::copyRow : &ReductionRows::mapRow;
  return KSUCCESS;
}

int ReductionRows::planMatch(const BitmapHandle& source, const ReductionTarget& target) {
  pixels_ = OsBlock<uint8_t>::allocate(uint64_t{width_} * 4);
  if (!pixels_) return KERR_NO_MEMORY;
  if (const int status = planConversion(source, 32, ORDER_BLUE_FIRST); status != KSUCCESS) return status;
  const uint32_t* table = target.inverseMap ? target.inverseMap.get() : currentSettings().userMatchTable;
  matcher_.prepare(target.palette, target.colorCount, table);
  run_ = table != nullptr ? &ReductionRows::matchRow<true> : &ReductionRows::matchRow<false>;
  return KSUCCESS;
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

void ReductionRows::packMapped(uint8_t* destination) {
  for (unsigned x = 0; x < width_; ++x) indexes_[x] = map_[indexes_[x]];
  pack_(destination, indexes_.get(), 0, width_);
}

template <bool byTable>
void ReductionRows::matchRow(uint8_t* destination, const uint8_t* source) {
  converter_.convert(pixels_.get(), source, width_);
  const uint8_t* pixel = pixels_.get();
  for (unsigned x = 0; x < width_; ++x, pixel += 4) {
    indexes_[x] =
        byTable ? matcher_.lookUp(pixel[2], pixel[1], pixel[0]) : matcher_.search(pixel[2], pixel[1], pixel[0]);
  }
  pack_(destination, indexes_.get(), 0, width_);
}

}  // namespace zavo
