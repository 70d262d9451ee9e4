// Combining pieces of rows. Both operands are brought into one working form, a chunk at a time: an index a byte up to 8
// bits, stored pixels above. Arithmetic needs bytes that are levels, so 16-bit pixels are widened for it and grey
// palettes give way to their levels. Plain copies need no chunks, bit operators on equal indexes no unpacking, and
// pixels that are stored in the working form no second copy.
#include "imgproc/combine_rows.h"

#include <algorithm>
#include <cstring>

#include "color/palettes.h"
#include "core/sizes.h"
#include "imgproc/alpha_rows.h"

namespace zavo {
namespace {

constexpr unsigned chunkPixels = 256;
// Eight pixels are whole bytes at every depth, so that a piece is loaded from up to seven pixels before it on.
constexpr unsigned leadPixels = 8;
constexpr unsigned chunkBytes = (chunkPixels + leadPixels) * 4;

constexpr int grayLevels = 0;  // the depth of levels without a palette

int workDepth(const BitmapHandle& destination, CombineOperator op) {
  if (!isArithmetic(op)) return destination.BitsPerPixel;
  if (destination.BitsPerPixel == 8) return grayLevels;
  return std::max(destination.BitsPerPixel, 24);
}

}  // namespace

bool hasLevels(const BitmapHandle& bitmap) {
  return bitmap.BitsPerPixel > 8 || (bitmap.BitsPerPixel == 8 && Zv_IsGrayScaleBitmap(&bitmap) != 0);
}

int RowCombiner::prepare(const BitmapHandle& destination, const BitmapHandle& source,
                         const CombineOperation& operation) {
  operation_ = operation;
  bits_ = static_cast<unsigned>(destination.BitsPerPixel);
  sourceBits_ = static_cast<unsigned>(source.BitsPerPixel);
  const int work = workDepth(destination, operation.op);
  workBytes_ = work > 8 ? static_cast<unsigned>(work) / 8 : 1;
  if (isArithmetic(operation.op) && bits_ == 16) putColors_ = putColors<uint16_t>;
  if (isArithmetic(operation.op) && bits_ == 32) putColors_ = putColors<uint32_t>;
  mask_ = static_cast<uint8_t>(bits_ < 8 ? (1u << bits_) - 1 : 0xFF);
  pack_ = bits_ < 8 ? packFunction(destination.BitsPerPixel) : nullptr;
  unpack_ = bits_ < 8 ? unpackFunction(destination.BitsPerPixel) : nullptr;

  readPaletteOrFixed(source, sourcePalette_);
  readPaletteOrFixed(destination, destinationPalette_);
  const int order = colorOrderOf(destination);
  if (const int status = sourceToWork_.prepare(source.BitsPerPixel, work, colorOrderOf(source), order, sourcePalette_,
                                               destinationPalette_);
      status != KSUCCESS) {
    return status;
  }
  const bool copies = isPlainCopy(operation);
  if (bits_ < 8 && sourceToWork_.changesNothing()) {
    run_ = copies ? &RowCombiner::copyBitRange : &RowCombiner::combineBitRange;
    return KSUCCESS;
  }
  if (copies && bits_ >= 8 && sourceBits_ >= 8) {
    run_ = &RowCombiner::copyPixels;
    return KSUCCESS;
  }
  if (sourceToWork_.changesNothing() && work == destination.BitsPerPixel && putColors_ == nullptr) {
    run_ = &RowCombiner::combineStored;
    return KSUCCESS;
  }
  run_ = &RowCombiner::combine;
  if (const int status = destinationToWork_.prepare(destination.BitsPerPixel, work, order, order, destinationPalette_,
                                                    destinationPalette_);
      status != KSUCCESS) {
    return status;
  }
  return workToDestination_.prepare(work, destination.BitsPerPixel, order, order, destinationPalette_,
                                    destinationPalette_);
}

void RowCombiner::copyBitRange(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                               unsigned count) {
  copyBits(destinationRow, uint64_t{first} * bits_, sourceRow, uint64_t{sourceFirst} * bits_, uint64_t{count} * bits_);
}

// The bit operators do to packed indexes what they do to indexes.
void RowCombiner::combineBitRange(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow,
                                  unsigned sourceFirst, unsigned count) {
  uint8_t sourceBits[chunkBytes];
  uint8_t destinationBits[chunkBytes];
  uint64_t to = uint64_t{first} * bits_;
  uint64_t from = uint64_t{sourceFirst} * bits_;
  for (uint64_t left = uint64_t{count} * bits_; left != 0;) {
    const unsigned lead = to % 8;
    const uint64_t chunk = std::min<uint64_t>(left, chunkBytes * 8 - lead);
    const auto bytes = static_cast<unsigned>((lead + chunk + 7) / 8);
    memcpy(destinationBits, destinationRow + to / 8, bytes);
    sourceBits[0] = 0;
    sourceBits[bytes - 1] = 0;
    copyBits(sourceBits, lead, sourceRow, from, chunk);
    combineBytes(destinationBits, sourceBits, bytes, operation_, 0xFF);
    copyBits(destinationRow, to, destinationBits, lead, chunk);
    to += chunk;
    from += chunk;
    left -= chunk;
  }
}

void RowCombiner::copyPixels(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                             unsigned count) {
  sourceToWork_.convert(destinationRow + columnOffset(first, bits_), sourceRow + columnOffset(sourceFirst, sourceBits_),
                        count);
}

// Where both operands are in the working form already, the destination is worked on in its row.
void RowCombiner::combineStored(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                                unsigned count) {
  uint8_t sourceBytes[chunkBytes];
  uint8_t* to = destinationRow + columnOffset(first, bits_);
  const uint8_t* from = sourceRow + columnOffset(sourceFirst, bits_);
  for (unsigned left = count * workBytes_; left != 0;) {
    const unsigned bytes = std::min(left, chunkBytes);
    memcpy(sourceBytes, from, bytes);
    combineBytes(to, sourceBytes, bytes, operation_, mask_);
    to += bytes;
    from += bytes;
    left -= bytes;
  }
}

void RowCombiner::combine(uint8_t* destinationRow, unsigned first, const uint8_t* sourceRow, unsigned sourceFirst,
                          unsigned count) {
  uint8_t sourcePixels[chunkBytes];
  uint8_t destinationPixels[chunkBytes];
  while (count != 0) {
    const unsigned chunk = std::min(count, chunkPixels);
    uint8_t* from = load(sourcePixels, sourceToWork_, sourceRow, sourceBits_, sourceFirst, chunk);
    uint8_t* to = load(destinationPixels, destinationToWork_, destinationRow, bits_, first, chunk);
    combineBytes(to, from, chunk * workBytes_, operation_, mask_);
    store(destinationRow, first, to, chunk);
    first += chunk;
    sourceFirst += chunk;
    count -= chunk;
  }
}

// Pixels of a row in the working form; they begin somewhere in `pixels`.
uint8_t* RowCombiner::load(uint8_t* pixels, RowConverter& converter, const uint8_t* row, unsigned rowBits,
                           unsigned first, unsigned count) const {
  const unsigned lead = first % leadPixels;
  const uint8_t* from = row + columnOffset(first - lead, rowBits);
  if (unpack_ == nullptr) {
    converter.convert(pixels, from, lead + count);
    return pixels + lead * workBytes_;
  }
  uint8_t packed[chunkBytes];
  converter.convert(packed, from, lead + count);
  unpack_(pixels, packed, lead, count);
  return pixels;
}

void RowCombiner::store(uint8_t* row, unsigned first, uint8_t* pixels, unsigned count) {
  if (pack_ != nullptr) {
    pack_(row, pixels, first, count);
    return;
  }
  uint8_t* to = row + columnOffset(first, bits_);
  if (putColors_ == nullptr) {
    workToDestination_.convert(to, pixels, count);
    return;
  }
  workToDestination_.convert(pixels, count);
  putColors_(to, pixels, count);
}

}  // namespace zavo
