// Covered pixels are counted from runs, without unpacking rows: the 0 pixels left of every area border come from one
// walk over a row's runs.
#include "display/paint_coverage.h"

#include <algorithm>

#include "core/perspective.h"
#include "core/run_rows.h"
#include "display/paint_lines.h"
#include "geometry/stepping.h"

namespace zavo {
namespace {

struct Area {
  unsigned first;  // source pixel or row
  unsigned last;   // exclusive
};

// The source items of destination item k.
Area areaOf(const Stepping& steps, unsigned sourceCount) {
  Stepping next = steps;
  next.advance();
  const unsigned first = steps.position();
  return {first, std::clamp(next.position(), first + 1, std::max(sourceCount, first + 1))};
}

// Walks a row's runs, telling how many 0 pixels lie before a column. Columns must not fall.
class ZeroCounter {
 public:
  explicit ZeroCounter(RunSpan runs) : runs_(runs) {}

  unsigned before(unsigned column) {
    while (next_ < runs_.size() && runEnd_ + runs_[next_] <= column) take();
    const unsigned inRun = column - runEnd_;  // pixels of the run that holds the column
    return zeros_ + (next_ >= runs_.size() || next_ % 2 == 0 ? inRun : 0);
  }

 private:
  void take() {
    if (next_ % 2 == 0) zeros_ += runs_[next_];
    runEnd_ += runs_[next_];
    ++next_;
  }

  RunSpan runs_;
  size_t next_ = 0;
  unsigned runEnd_ = 0;  // pixels in the runs taken
  unsigned zeros_ = 0;   // of them 0
};

// Sums of covered pixels for one line of destination pixels.
class LineCounts {
 public:
  // Takes the columns of every pixel of a line, in stored coordinates.
  [[nodiscard]] int open(const BitmapHandle& bitmap, const PaintGeometry& geometry, const LineWalk& walk) {
    count_ = walk.pixelCount();
    areas_ = OsBlock<Area>::allocate(count_);
    covered_ = OsBlock<uint64_t>::allocate(count_);
    if (!areas_ || !covered_) return KERR_NO_MEMORY;
    const bool turned = walk.isTurned();
    const unsigned sources = turned ? geometry.sourceHeight() : geometry.sourceWidth();
    const unsigned destinations = turned ? geometry.destinationHeight() : geometry.destinationWidth();
    Stepping steps(sources, destinations, turned ? geometry.lowestRow() : geometry.firstColumn());
    for (unsigned k = 0; k < count_; ++k, steps.advance()) areas_[k] = place(areaOf(steps, sources), bitmap, geometry);
    falling_ = bitmap.ViewPerspective == VIEW_TURNED_90;
    return KSUCCESS;
  }

  void clear() {
    std::fill_n(covered_.get(), count_, uint64_t{0});
    rows_ = 0;
  }

  void addRow(RunSpan runs) {
    // Borders are looked up in rising order. Areas that do not begin where the one before ended, as in an enlarged
    // line, have their first borders looked up in a walk of their own.
    ZeroCounter firsts(runs), lasts(runs);
    unsigned end = 0;
    unsigned beforeEnd = 0;
    for (unsigned i = 0; i < count_; ++i) {
      const unsigned k = falling_ ? count_ - 1 - i : i;
      const unsigned before = areas_[k].first == end ? beforeEnd : firsts.before(areas_[k].first);
      end = areas_[k].last;
      beforeEnd = lasts.before(end);
      covered_[k] += beforeEnd - before;
    }
    ++rows_;
  }

  void write(uint8_t* grays, bool inverted) const {
    const uint8_t flip = inverted ? 0xFF : 0;
    for (unsigned k = 0; k < count_; ++k) {
      const uint64_t whole = uint64_t{areas_[k].last - areas_[k].first} * rows_;
      const auto gray = static_cast<uint8_t>(covered_[k] < whole ? 255 - covered_[k] * 255 / whole : 0);
      grays[k] = gray ^ flip;
    }
  }

 private:
  // Upright lines begin at the source's left; turned ones at its lowest seen row.
  static Area place(Area area, const BitmapHandle& bitmap, const PaintGeometry& geometry) {
    const auto moved = [&](unsigned from, unsigned to) {
      const auto width = static_cast<unsigned>(bitmap.Width);
      return Area{std::min(from, width), std::min(to, width)};
    };
    const RECT& source = geometry.source();
    if (!isRotated(bitmap.ViewPerspective)) {
      const auto left = static_cast<unsigned>(source.left);
      return moved(left + area.first, left + area.last);
    }
    const auto bottom = static_cast<unsigned>(source.bottom);
    if (bitmap.ViewPerspective == VIEW_TURNED_90)
      return moved(bottom - std::min(area.last, bottom), bottom - area.first);
    const unsigned start = static_cast<unsigned>(bitmap.Width) - bottom;
    return moved(start + area.first, start + area.last);
  }

  unsigned count_ = 0;
  unsigned rows_ = 0;
  bool falling_ = false;  // columns fall from pixel to pixel
  OsBlock<Area> areas_;
  OsBlock<uint64_t> covered_;
};

}  // namespace

int paintCoverage(BandPainter& bands, BitmapHandle& bitmap, const PaintGeometry& geometry, bool inverted) {
  RunRowReader reader(bitmap);
  LineWalk walk(bitmap, geometry);
  LineCounts counts;
  if (const int status = reader.open(); status != KSUCCESS) return status;
  if (const int status = counts.open(bitmap, geometry, walk); status != KSUCCESS) return status;

  for (unsigned line = 0; line < walk.lineCount(); ++line, walk.advance()) {
    counts.clear();
    for (unsigned k = 0; k < walk.rowsOfLine(); ++k) {
      const unsigned row = walk.storedRow(k);
      if (row >= static_cast<unsigned>(bitmap.Height)) continue;  // the source rectangle may reach over the bitmap
      const RunSpan* runs = reader.row(row);
      if (runs == nullptr) return reader.status();
      counts.addRow(*runs);
    }
    counts.write(bands.line(), inverted);
    bands.endLine();
  }
  return KSUCCESS;
}

}  // namespace zavo
