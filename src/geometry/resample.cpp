// Smooth scaling of images: every source row is scaled sideways first, then the rows are averaged or joined by
// straight lines.
#include <zavo.h>

#include <algorithm>
#include <cstring>

#include "core/memory.h"
#include "core/owners.h"
#include "core/progress.h"
#include "geometry/resample_format.h"
#include "geometry/resample_rows.h"
#include "geometry/resize.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

// Source rows in working form, already of the destination's width.
class SidewaysRows {
 public:
  SidewaysRows(BitmapHandle& source, const ResampleFormat& format)
      : sourceWidth_(static_cast<unsigned>(source.Width)), channels_(format.channels()), reader_(source, format) {}

  [[nodiscard]] int open(unsigned width) {
    width_ = width;
    scale_ = width == sourceWidth_ ? nullptr : resampleRowFunction(channels_, width, sourceWidth_);
    return reader_.open();
  }

  // Scales a source row into `destination`. False when it could not be read, see status().
  [[nodiscard]] bool make(uint8_t* destination, unsigned index) {
    const uint8_t* row = reader_.row(index);
    if (row == nullptr) return false;
    if (scale_ == nullptr) {
      memcpy(destination, row, size_t{width_} * channels_);
    } else {
      scale_(destination, row, width_, sourceWidth_);
    }
    return true;
  }
  [[nodiscard]] int status() const { return reader_.status(); }

 private:
  unsigned sourceWidth_;
  unsigned channels_;
  unsigned width_ = 0;
  ResampleRowFunction scale_ = nullptr;
  WorkingRowReader reader_;
};

struct ResampleRun {
  SidewaysRows& rows;
  WorkingRowWriter& writer;
  Progress& progress;
  size_t rowBytes;  // of a destination row in working form
  unsigned sourceHeight;
  unsigned height;

  [[nodiscard]] int finishRow() {
    if (const int status = writer.commit(); status != KSUCCESS) return status;
    return progress.step();
  }
};

// Every destination row is the average of as many source rows, or one more for some.
int shrinkRows(ResampleRun& run) {
  RowSums sums;
  if (const int status = sums.open(run.rowBytes, run.sourceHeight / run.height + 1); status != KSUCCESS) return status;
  auto row = OsBlock<uint8_t>::allocate(run.rowBytes);
  if (!row) return KERR_NO_MEMORY;
  Stepping stepping(run.sourceHeight, run.height);
  for (unsigned target = 0; target < run.height; ++target) {
    const unsigned first = stepping.position();
    const unsigned count = stepping.advance();
    sums.clear();
    for (unsigned i = 0; i < count; ++i) {
      if (!run.rows.make(row.get(), first + i)) return run.rows.status();
      sums.add(row.get());
    }
    sums.average(run.writer.row(), count);
    if (const int status = run.finishRow(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// Every source row spans a number of destination rows, which run in a straight line to the next source row.
int enlargeRows(ResampleRun& run) {
  auto from = OsBlock<uint8_t>::allocate(run.rowBytes);
  auto to = OsBlock<uint8_t>::allocate(run.rowBytes);
  if (!from || !to) return KERR_NO_MEMORY;
  if (!run.rows.make(from.get(), 0)) return run.rows.status();
  unsigned left = run.height;
  for (unsigned copies = headStart(run.height / run.sourceHeight, run.height, 1); copies != 0; --copies, --left) {
    memcpy(run.writer.row(), from.get(), run.rowBytes);
    if (const int status = run.finishRow(); status != KSUCCESS) return status;
  }
  Stepping stepping(run.height, run.sourceHeight);
  for (unsigned source = 0; left != 0; ++source) {
    const bool last = source + 1 == run.sourceHeight;
    if (!last && !run.rows.make(to.get(), source + 1)) return run.rows.status();
    const unsigned span = stepping.advance();
    const unsigned count = std::min(span, left);
    left -= count;
    for (unsigned step = 0; step < count; ++step) {
      if (step == 0 || last) {
        memcpy(run.writer.row(), from.get(), run.rowBytes);
      } else {
        blendRows(run.writer.row(), from.get(), to.get(), run.rowBytes, step, span);
      }
      if (const int status = run.finishRow(); status != KSUCCESS) return status;
    }
    std::swap(from, to);
  }
  return KSUCCESS;
}

int resample(BitmapHandle& destination, BitmapHandle& source) {
  const ResampleFormat format(source);
  const BitmapLock destinationLock(destination);
  const BitmapLock sourceLock(source);
  Progress progress(destination.Height);
  if (const int status = progress.begin(); status != KSUCCESS) return status;
  SidewaysRows rows(source, format);
  WorkingRowWriter writer(destination, format);
  if (const int status = rows.open(static_cast<unsigned>(destination.Width)); status != KSUCCESS) return status;
  if (const int status = writer.open(); status != KSUCCESS) return status;

  ResampleRun run = {rows,
                     writer,
                     progress,
                     size_t{static_cast<unsigned>(destination.Width)} * format.channels(),
                     static_cast<unsigned>(source.Height),
                     static_cast<unsigned>(destination.Height)};
  return run.sourceHeight <= run.height ? enlargeRows(run) : shrinkRows(run);
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ResampleBitmap(BitmapHandle* bitmap, int width, int height) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  ResizedImage resized(*bitmap);
  if (const int status = resized.create(width, height); status != KSUCCESS) return status;
  if (const int status = resample(*resized, *bitmap); status != KSUCCESS) return status;
  return resized.install();
}
