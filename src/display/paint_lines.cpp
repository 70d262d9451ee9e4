// Stepping through the source: lines one way, pixels of a line the other.
#include "display/paint_lines.h"

#include <cstring>

#include "core/perspective.h"
#include "core/sizes.h"

namespace zavo {

// Turned lines step through seen columns from the left, upright ones through seen rows from below: so the walk over
// upright lines, top to bottom, goes backwards.
LineWalk::LineWalk(const BitmapHandle& bitmap, const PaintGeometry& geometry)
    : bitmap_(bitmap),
      turned_(isRotated(bitmap.ViewPerspective)),
      origin_(turned_ ? geometry.source().left : geometry.source().bottom - 1),
      lines_(static_cast<unsigned>(turned_ ? geometry.width() : geometry.height())),
      pixels_(static_cast<unsigned>(turned_ ? geometry.height() : geometry.width())),
      steps_(turned_ ? Stepping(geometry.sourceWidth(), geometry.destinationWidth(), geometry.firstColumn())
                     : Stepping(geometry.sourceHeight(), geometry.destinationHeight(), geometry.highestRow())) {}

unsigned LineWalk::storedRow(unsigned k) const {
  const auto position = static_cast<int>(steps_.position() + k);
  int row;
  if (turned_) {
    const int column = origin_ + position;
    row = bitmap_.ViewPerspective == VIEW_TURNED_90 ? bitmap_.Height - 1 - column : column;
  } else {
    const int seen = origin_ - position;
    row = isFlipped(bitmap_.ViewPerspective) ? bitmap_.Height - 1 - seen : seen;
  }
  return static_cast<unsigned>(row);
}

unsigned LineWalk::rowsOfLine() const {
  Stepping next = steps_;
  const unsigned rows = next.advance();
  return rows != 0 ? rows : 1;
}

void LineWalk::advance() {
  repeats_ = (turned_ ? steps_.advance() : steps_.retreat()) == 0;
}

int PaintLines::open(const PaintGeometry& geometry) {
  StretchSpan span = {.destinationWidth = geometry.destinationWidth(),
                      .sourceWidth = geometry.sourceWidth(),
                      .first = geometry.firstColumn(),
                      .count = walk_.pixelCount(),
                      .sourceShift = geometry.source().left};
  if (walk_.isTurned()) {
    // From the lowest seen row upwards, stored rows count backwards from their end, or forwards when they are
    // mirrored first.
    span = {.destinationWidth = geometry.destinationHeight(),
            .sourceWidth = geometry.sourceHeight(),
            .first = geometry.lowestRow(),
            .count = walk_.pixelCount(),
            .sourceShift = bitmap_.Width - geometry.source().bottom};
  }
  if (bitmap_.ViewPerspective == VIEW_TURNED_90) {
    mirror_ = mirrorFunction(bitmap_.BitsPerPixel);
    mirrored_ = OsBlock<uint8_t>::allocate(bitmap_.BytesPerLine);
    if (!mirrored_) return KERR_NO_MEMORY;
  }
  return stretch_.plan(span, bitmap_.BitsPerPixel);
}

unsigned PaintLines::lineBytes() const {
  return static_cast<unsigned>(rowBytesFor(walk_.pixelCount(), static_cast<unsigned>(bitmap_.BitsPerPixel)));
}

int PaintLines::make(uint8_t* line) {
  const uint8_t* row = rows_.row(walk_.storedRow());
  if (row == nullptr) return rows_.status();
  if (mirror_ != nullptr) {
    memcpy(mirrored_.get(), row, bitmap_.BytesPerLine);
    mirror_(mirrored_.get(), static_cast<unsigned>(bitmap_.Width));
    row = mirrored_.get();
  }
  stretch_.stretch(line, row);
  walk_.advance();
  return KSUCCESS;
}

}  // namespace zavo
