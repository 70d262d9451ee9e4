// Lines of a paint: stored rows in the order in which they are painted, stretched to the destination.
#pragma once

#include <zavo.h>

#include "core/memory.h"
#include "display/paint_geometry.h"
#include "display/paint_rows.h"
#include "geometry/mirror_row.h"
#include "geometry/row_stretch.h"

namespace zavo {

// Which stored row every line takes, upright (a line is a destination row, top to bottom) or turned (a line is a
// destination column, left to right, from its lowest pixel upwards).
class LineWalk {
 public:
  LineWalk(const BitmapHandle& bitmap, const PaintGeometry& geometry);

  [[nodiscard]] bool isTurned() const { return turned_; }
  [[nodiscard]] unsigned lineCount() const { return lines_; }
  // Pixels of a line.
  [[nodiscard]] unsigned pixelCount() const { return pixels_; }

  // The stored row of the current line; on enlarging several lines take the same. On shrinking, a line stands for
  // rowsOfLine() rows of which row 0 is the one it takes.
  [[nodiscard]] unsigned storedRow(unsigned k = 0) const;
  [[nodiscard]] unsigned rowsOfLine() const;
  // The current line takes the row that the line before took.
  [[nodiscard]] bool repeats() const { return repeats_; }
  void advance();

 private:
  const BitmapHandle& bitmap_;
  bool turned_;
  int origin_;  // seen column of position 0 when turned, seen row of position 0 when not
  unsigned lines_;
  unsigned pixels_;
  Stepping steps_;
  bool repeats_ = false;
};

// Makes the lines of a paint, at the bitmap's own depth.
class PaintLines {
 public:
  PaintLines(BitmapHandle& bitmap, const PaintGeometry& geometry, PaintRows& rows)
      : bitmap_(bitmap), rows_(rows), walk_(bitmap, geometry) {}

  // KSUCCESS, KERR_NO_MEMORY.
  [[nodiscard]] int open(const PaintGeometry& geometry);

  [[nodiscard]] const LineWalk& walk() const { return walk_; }

  // Bytes of a line at the bitmap's depth.
  [[nodiscard]] unsigned lineBytes() const;

  // Writes the current line and goes to the next. KSUCCESS or the code of the row that could not be read.
  [[nodiscard]] int make(uint8_t* line);
  // Goes to the next line without writing the current one.
  void skip() { walk_.advance(); }

 private:
  BitmapHandle& bitmap_;
  PaintRows& rows_;
  LineWalk walk_;
  RowStretch stretch_;
  MirrorFunction mirror_ = nullptr;  // for the perspective whose stored rows run down the picture
  OsBlock<uint8_t> mirrored_;
};

}  // namespace zavo
