// Scaling 1-bit images so that thin black strokes stay: a pixel is black when the square root of its box's area is
// reached by the black pixels in it. Black is counted run by run, without unpacking rows.
#include <algorithm>
#include <cstring>

#include "core/perspective.h"
#include "core/progress.h"
#include "core/row_padding.h"
#include "core/rows.h"
#include "core/run_rows.h"
#include "geometry/resize.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

// The largest whole number whose square is not above `area`.
unsigned squareRoot(uint64_t area) {
  uint64_t root = area;
  for (uint64_t next = (area + 1) / 2; next < root; next = (root + area / root) / 2) root = next;
  return static_cast<unsigned>(root);
}

// Black pixels of a box that make its pixel black.
unsigned blackThreshold(uint64_t area) {
  unsigned threshold = squareRoot(area);
  if (threshold < 5 && threshold > 0) --threshold;
  return std::max(threshold, 1u);
}

// Counts the black pixels of a row of boxes.
class BoxRow {
 public:
  [[nodiscard]] int plan(unsigned boxes, unsigned sourceWidth, bool blackIsSet, unsigned enough) {
    boxes_ = boxes;
    sourceWidth_ = sourceWidth;
    boxWidth_ = std::max(1u, sourceWidth / boxes);
    blackIsSet_ = blackIsSet;
    enough_ = enough;
    starts_ = OsBlock<uint32_t>::allocate(boxes);
    counts_ = OsBlock<uint32_t>::allocate(boxes);
    if (!starts_ || !counts_) return KERR_NO_MEMORY;
    Stepping columns(sourceWidth, boxes);
    for (unsigned i = 0; i < boxes; ++i) {
      starts_[i] = columns.position();
      columns.advance();
    }
    return KSUCCESS;
  }

  void clear() { memset(counts_.get(), 0, size_t{boxes_} * sizeof(uint32_t)); }

  void add(RunSpan runs) {
    unsigned start = 0;
    unsigned box = 0;
    bool set = false;
    for (const uint16_t run : runs) {
      if (set == blackIsSet_) box = addBlack(box, start, start + run);
      start += run;
      set = !set;
    }
    // Past the last run the pixels are 0.
    if (!blackIsSet_) addBlack(box, start, sourceWidth_);
  }

  // Packs the pixels of the boxes, the unused bits of the last byte as zeros.
  void pack(uint8_t* bits) const {
    for (unsigned i = 0; i < boxes_; i += 8) {
      unsigned byte = 0;
      for (unsigned k = i; k < i + 8; ++k) {
        byte = byte << 1 | (k < boxes_ && (counts_[k] >= enough_) == blackIsSet_ ? 1u : 0u);
      }
      *bits++ = static_cast<uint8_t>(byte);
    }
  }

 private:
  // Counts a run of black in the boxes it meets. No box before `box` reaches it; returns the first that can reach a
  // later run.
  unsigned addBlack(unsigned box, unsigned start, unsigned end) {
    while (box < boxes_ && starts_[box] + boxWidth_ <= start) ++box;
    unsigned reached = box;
    for (unsigned i = box; i < boxes_ && starts_[i] < end; ++i) {
      reached = i;
      // Enough is enough: so a count stays within 32 bits, however large the box.
      if (counts_[i] >= enough_) continue;
      const unsigned boxEnd = starts_[i] + boxWidth_;
      if (start < boxEnd) counts_[i] += std::min(end, boxEnd) - std::max(start, starts_[i]);
    }
    return reached;
  }

  unsigned boxes_ = 0;
  unsigned sourceWidth_ = 0;
  unsigned boxWidth_ = 1;
  unsigned enough_ = 1;
  bool blackIsSet_ = false;
  OsBlock<uint32_t> starts_;
  OsBlock<uint32_t> counts_;
};

// Stored row of a row counted from the top of a bottom-up picture, else from the first stored row.
unsigned storedRow(const BitmapHandle& bitmap, unsigned row) {
  return isFlipped(bitmap.ViewPerspective) ? static_cast<unsigned>(bitmap.Height) - 1 - row : row;
}

}  // namespace

int resizeFavorBlack(BitmapHandle& destination, BitmapHandle& source, bool blackIsSet) {
  const auto width = static_cast<unsigned>(destination.Width);
  const auto height = static_cast<unsigned>(destination.Height);
  const auto sourceWidth = static_cast<unsigned>(source.Width);
  const auto sourceHeight = static_cast<unsigned>(source.Height);
  const unsigned boxHeight = std::max(1u, sourceHeight / height);
  const uint64_t boxArea = uint64_t{std::max(1u, sourceWidth / width)} * boxHeight;

  const BitmapLock destinationLock(destination);
  const BitmapLock sourceLock(source);
  Progress progress(destination.Height);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  RunRowReader reader(source);
  RowWriter writer(destination);
  BoxRow boxes;
  if (const int status = reader.open(); status != KSUCCESS) return status;
  if (const int status = writer.open(); status != KSUCCESS) return status;
  if (const int status = boxes.plan(width, sourceWidth, blackIsSet, blackThreshold(boxArea)); status != KSUCCESS) {
    return status;
  }

  Stepping rows(sourceHeight, height);
  bool repeats = false;
  for (unsigned row = 0; row < height; ++row) {
    const unsigned target = storedRow(destination, row);
    if (repeats) {
      const int status = writer.repeat(target, storedRow(destination, row - 1));
      if (status != KSUCCESS) return status;
    } else {
      boxes.clear();
      for (unsigned i = 0; i < boxHeight; ++i) {
        const RunSpan* runs = reader.row(storedRow(source, rows.position() + i));
        if (runs == nullptr) return reader.status();
        boxes.add(*runs);
      }
      uint8_t* bits = writer.row(target);
      boxes.pack(bits);
      clearRowPadding(bits, width, 1);
      if (const int status = writer.commit(target); status != KSUCCESS) return status;
    }
    repeats = rows.advance() == 0;
    if (const int status = progress.step(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace zavo
