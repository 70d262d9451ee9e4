// Where a paint happens: source, destination and clip rectangles mapped onto each other by whole numbers.
#pragma once

#include <zavo.h>

#include "geometry/stepping.h"

namespace zavo {

// The rectangles of a paint as the caller gave them; null for the defaults. Source rectangles count on the picture as
// seen for the upright and the bottom-up perspective, in stored coordinates for the rotated ones. Rows that are not at
// hand can be kept out by `storedRows`, in stored coordinates.
struct PaintRequest {
  const RECT* source;
  const RECT* sourceClip;
  const RECT* destination;
  const RECT* destinationClip;
  const RECT* storedRows;
};

// A destination pixel k columns from the left takes seen source column left + floor(k * w / W); one j rows above the
// lowest row takes seen row bottom - 1 - floor(j * h / H).
class PaintGeometry {
 public:
  // False when nothing is to be painted.
  [[nodiscard]] bool resolve(const BitmapHandle& bitmap, const PaintRequest& request);

  // The destination pixels to paint.
  [[nodiscard]] const RECT& area() const { return area_; }
  [[nodiscard]] int width() const { return area_.right - area_.left; }
  [[nodiscard]] int height() const { return area_.bottom - area_.top; }

  // No scaling either way.
  [[nodiscard]] bool isSameSize() const;

  // Seen size of the whole source and size of the whole destination rectangle.
  [[nodiscard]] unsigned sourceWidth() const { return static_cast<unsigned>(source_.right - source_.left); }
  [[nodiscard]] unsigned sourceHeight() const { return static_cast<unsigned>(source_.bottom - source_.top); }
  [[nodiscard]] unsigned destinationWidth() const {
    return static_cast<unsigned>(destination_.right - destination_.left);
  }
  [[nodiscard]] unsigned destinationHeight() const {
    return static_cast<unsigned>(destination_.bottom - destination_.top);
  }

  // The whole source rectangle, as seen, and the whole destination.
  [[nodiscard]] const RECT& source() const { return source_; }
  [[nodiscard]] const RECT& destination() const { return destination_; }

  // Columns of the area counted from the destination's left, rows from its lowest row upwards.
  [[nodiscard]] unsigned firstColumn() const { return static_cast<unsigned>(area_.left - destination_.left); }
  [[nodiscard]] unsigned lowestRow() const { return static_cast<unsigned>(destination_.bottom - area_.bottom); }
  [[nodiscard]] unsigned highestRow() const { return static_cast<unsigned>(destination_.bottom - 1 - area_.top); }

 private:
  RECT source_;
  RECT destination_;
  RECT area_;
};

}  // namespace zavo
