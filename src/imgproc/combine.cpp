// Combining a rectangle of one picture with another, row by row.
//
// Both operands are brought into one working form: an index a byte up to 8 bits, stored pixels above. Arithmetic on
// levels needs bytes that are levels: 16-bit pixels and grey palettes other than the plain ramp are widened for it.
#include <zavo.h>

#include <algorithm>
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
#include "imgproc/combine_operators.h"
#include "region/region.h"
#include "region/run_operations.h"

namespace zavo {
namespace {

constexpr int risingRamp = 1;  // what Zv_IsGrayScaleBitmap says of indexes that are levels (at 8 bits)

// --- Where: the destination rectangle and the region inside it

struct Placement {
  RECT area;          // in the destination
  int sourceOffsetX;  // source column minus destination column
  int sourceOffsetY;
};

// Clips the rectangle to both bitmaps. Sums are formed in 64 bits, so that absurd positions clip as others do.
Placement place(const BitmapHandle& destination, int left, int top, int width, int height, const BitmapHandle& source,
                int sourceLeft, int sourceTop) {
  const int64_t shiftX = int64_t{sourceLeft} - left;
  const int64_t shiftY = int64_t{sourceTop} - top;
  const int64_t x0 = std::max({int64_t{left}, int64_t{0}, -shiftX});
  const int64_t y0 = std::max({int64_t{top}, int64_t{0}, -shiftY});
  const int64_t x1 = std::min({int64_t{left} + width, int64_t{destination.Width}, source.Width - shiftX});
  const int64_t y1 = std::min({int64_t{top} + height, int64_t{destination.Height}, source.Height - shiftY});
  if (x0 >= x1 || y0 >= y1) return {};
  return {.area = {static_cast<LONG>(x0), static_cast<LONG>(y0), static_cast<LONG>(x1), static_cast<LONG>(y1)},
          .sourceOffsetX = static_cast<int>(shiftX),
          .sourceOffsetY = static_cast<int>(shiftY)};
}

// The pixels of the area that both regions allow, in destination coordinates.
int allowedRegion(OwnedRegion& allowed, const BitmapHandle& destination, const BitmapHandle& source,
                  const Placement& where) {
  if (const int status = makeRectRegion(allowed, where.area); status != KSUCCESS) return status;
  const auto limitTo = [&](const BitmapRegion& limit, int rowOffset, int columnOffset) {
    OwnedRegion moved, common;
    if (const int status = copyMoved(moved, limit, rowOffset, columnOffset, where.area); status != KSUCCESS) {
      return status;
    }
    const int status = combineRuns(common, allowed.get(), moved.get(), RunOperation::both, where.area);
    if (status == KSUCCESS) allowed = std::move(common);
    return status;
  };
  if (destination.Region != nullptr) {
    if (const int status = limitTo(*destination.Region, 0, 0); status != KSUCCESS) return status;
  }
  if (source.Region == nullptr) return KSUCCESS;
  return limitTo(*source.Region, -where.sourceOffsetY, -where.sourceOffsetX);
}

// --- How: one row of the rectangle

int orderOf(const BitmapHandle& bitmap) {
  return bitmap.ColorOrder == ORDER_BLUE_FIRST ? 1 : 0;
}

class RowCombiner {
 public:
  RowCombiner(const BitmapHandle& destination, const BitmapHandle& source, const CombineOperation& operation)
      : operation_(operation),
        bits_(static_cast<unsigned>(destination.BitsPerPixel)),
        sourceBits_(static_cast<unsigned>(source.BitsPerPixel)),
        workDepth_(destination.BitsPerPixel) {}

  // Plans for pieces of `width` pixels. KSUCCESS, KERR_BAD_BPP for arithmetic on indexes that are no levels, or
  // KERR_NO_MEMORY.
  [[nodiscard]] int prepare(const BitmapHandle& destination, const BitmapHandle& source, unsigned width);

  // Combines `width` pixels from column `left` of the destination row and `sourceLeft` of the source row on; only the
  // pixels of the runs change.
  void run(uint8_t* destinationRow, const uint8_t* sourceRow, unsigned left, unsigned sourceLeft, unsigned width,
           Segments runs);

 private:
  uint8_t* loadPiece(OsBlock<uint8_t>& buffer, RowConverter& converter, const uint8_t* row, unsigned rowBits,
                     unsigned left, unsigned width) const;
  void storeRun(uint8_t* row, unsigned first, unsigned count, const uint8_t* pixels);

  CombineOperation operation_;
  unsigned bits_;
  unsigned sourceBits_;
  int workDepth_;           // 0 for grey levels
  unsigned workBytes_ = 1;  // of a working pixel
  RGBQUAD sourcePalette_[256];
  RGBQUAD destinationPalette_[256];
  RowConverter sourceToWork_;
  RowConverter destinationToWork_;
  RowConverter workToDestination_;
  OsBlock<uint8_t> source_;
  OsBlock<uint8_t> destination_;
  OsBlock<uint8_t> converted_;  // a run back in the destination's form, or a packed row before unpacking
};

int RowCombiner::prepare(const BitmapHandle& destination, const BitmapHandle& source, unsigned width) {
  if (isArithmetic(operation_.op)) {
    const int gray = Zv_IsGrayScaleBitmap(const_cast<BitmapHandle*>(&destination));
    if (bits_ < 8 || (bits_ == 8 && gray == 0)) return KERR_BAD_BPP;
    if (bits_ == 8 && gray != risingRamp) workDepth_ = 0;
    if (bits_ == 16) workDepth_ = 24;
  }
  workBytes_ = workDepth_ > 8 ? static_cast<unsigned>(workDepth_) / 8 : 1;

  readPalette(source, sourcePalette_);
  readPalette(destination, destinationPalette_);
  const int order = orderOf(destination);
  const int depth = destination.BitsPerPixel;
  if (sourceToWork_.prepare(source.BitsPerPixel, workDepth_, orderOf(source), order, sourcePalette_,
                            destinationPalette_) != KSUCCESS ||
      destinationToWork_.prepare(depth, workDepth_, order, order, destinationPalette_, destinationPalette_) !=
          KSUCCESS ||
      workToDestination_.prepare(workDepth_, depth, order, order, destinationPalette_, destinationPalette_) !=
          KSUCCESS) {
    return KERR_BAD_BPP;
  }
  // Pieces begin up to seven pixels early, at a byte, and pixels are of four bytes at most.
  const uint64_t bytes = (uint64_t{width} + 8) * 4;
  source_ = OsBlock<uint8_t>::allocate(bytes);
  destination_ = OsBlock<uint8_t>::allocate(bytes);
  converted_ = OsBlock<uint8_t>::allocate(bytes);
  return source_ && destination_ && converted_ ? KSUCCESS : KERR_NO_MEMORY;
}

uint8_t* RowCombiner::loadPiece(OsBlock<uint8_t>& buffer, RowConverter& converter, const uint8_t* row, unsigned rowBits,
                                unsigned left, unsigned width) const {
  const unsigned lead = left % 8;  // eight pixels are whole bytes at every depth
  const uint8_t* from = row + columnOffset(left - lead, rowBits);
  if (workDepth_ >= 1 && workDepth_ < 8) {
    converter.convert(converted_.get(), from, lead + width);
    unpackFunction(workDepth_)(buffer.get(), converted_.get(), lead, width);
    return buffer.get();
  }
  converter.convert(buffer.get(), from, lead + width);
  return buffer.get() + lead * workBytes_;
}

void RowCombiner::storeRun(uint8_t* row, unsigned first, unsigned count, const uint8_t* pixels) {
  if (bits_ < 8) {
    packFunction(workDepth_)(row, pixels, first, count);
    return;
  }
  uint8_t* to = row + columnOffset(first, bits_);
  workToDestination_.convert(converted_.get(), pixels, count);
  const uint8_t* from = converted_.get();
  if (!isArithmetic(operation_.op) || bits_ < 16 || bits_ == 24) {
    memcpy(to, from, count * (bits_ / 8));
    return;
  }
  // Arithmetic is for colours: the alpha stays.
  for (unsigned k = 0; k < count; ++k) {
    if (bits_ == 32) {
      memcpy(to + 4 * k, from + 4 * k, 3);
    } else {
      to[2 * k] = from[2 * k];
      to[2 * k + 1] = static_cast<uint8_t>((to[2 * k + 1] & 0x80) | (from[2 * k + 1] & 0x7F));
    }
  }
}

void RowCombiner::run(uint8_t* destinationRow, const uint8_t* sourceRow, unsigned left, unsigned sourceLeft,
                      unsigned width, Segments runs) {
  uint8_t* source = loadPiece(source_, sourceToWork_, sourceRow, sourceBits_, sourceLeft, width);
  uint8_t* destination = loadPiece(destination_, destinationToWork_, destinationRow, bits_, left, width);
  const auto mask = static_cast<uint8_t>(bits_ < 8 ? (1u << bits_) - 1 : 0xFF);
  combineBytes(destination, source, width * workBytes_, operation_, mask);
  for (unsigned i = 0; i < runs.count; i += 2) {
    const auto first = static_cast<unsigned>(runs.values[i]);
    const auto count = static_cast<unsigned>(runs.values[i + 1]) - first;
    storeRun(destinationRow, first, count, destination + (first - left) * workBytes_);
  }
}

// --- The whole rectangle

int combineRows(BitmapHandle& destination, BitmapHandle& source, const Placement& where,
                const CombineOperation& operation) {
  OwnedRegion allowed;
  if (const int status = allowedRegion(allowed, destination, source, where); status != KSUCCESS) return status;
  const auto width = static_cast<unsigned>(where.area.right - where.area.left);
  RowCombiner combiner(destination, source, operation);
  if (const int status = combiner.prepare(destination, source, width); status != KSUCCESS) return status;

  const BitmapLock sourceLock(source);
  const BitmapLock destinationLock(destination);
  RowReader reader(source);
  RowWriter writer(destination);
  if (const int status = reader.open(); status != KSUCCESS) return status;
  if (const int status = writer.open(); status != KSUCCESS) return status;
  const auto left = static_cast<unsigned>(where.area.left);
  const auto sourceLeft = static_cast<unsigned>(where.area.left + where.sourceOffsetX);
  for (int y = where.area.top; y < where.area.bottom; ++y) {
    const Segments runs = regionRow(*allowed.get(), y);
    if (runs.empty()) continue;
    const uint8_t* from = reader.row(static_cast<unsigned>(y + where.sourceOffsetY));
    if (from == nullptr) return reader.status();
    uint8_t* to = writer.edit(static_cast<unsigned>(y));
    if (to == nullptr) return writer.status();
    combiner.run(to, from, left, sourceLeft, width, runs);
    if (const int status = writer.commit(static_cast<unsigned>(y)); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CombineBitmap(BitmapHandle* destination, int left, int top, int width, int height,
                               BitmapHandle* source, int sourceLeft, int sourceTop, unsigned operation) {
  if (!isAllocated(destination) || !isAllocated(source)) return KERR_BAD_BITMAP;
  CombineOperation parsed;
  if (!parseCombineOperation(parsed, operation) || width < 0 || height < 0) return KERR_BAD_PARAMETER;

  // Rows of a picture stored another way round, or of the destination itself, come from a copy.
  OwnedBitmap copy;
  BitmapHandle* rows = source;
  if (!sameFrame(source->ViewPerspective, destination->ViewPerspective)) {
    rows = copy.get();
    const int status = Zv_ChangeBitmapViewPerspective(rows, source, destination->ViewPerspective);
    if (status != KSUCCESS) return status;
  } else if (source == destination || source->Data == destination->Data) {
    rows = copy.get();
    if (const int status = Zv_CopyBitmap(rows, source); status != KSUCCESS) return status;
  }
  const Placement where = place(*destination, left, top, width, height, *rows, sourceLeft, sourceTop);
  if (isEmptyRect(where.area)) return KSUCCESS;
  return combineRows(*destination, *rows, where, parsed);
}
