// Bringing shapes into stored coordinates: offset and scale while building, the change of perspective afterwards.
#include "region/shape.h"

#include <algorithm>
#include <utility>

#include "core/perspective.h"
#include "region/display_transform.h"
#include "region/region_builder.h"
#include "region/region_transform.h"

namespace zavo {
namespace {

int64_t mapped(int edge, int offset, int numerator, int denominator) {
  // One short of the lowest sum keeps the product in 64 bits.
  const int64_t position = std::max<int64_t>(int64_t{edge} + offset, -int64_t{UINT32_MAX});
  return position * numerator / denominator;
}

// Takes a shape in bands (rows of equal runs), scales each and builds the part of it that lies in the frame.
class ScaledBuilder {
 public:
  explicit ScaledBuilder(const ShapeScale& scale) : scale_(scale) {}

  // Prepares for a shape with the bounding box `box`. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int start(const RECT& box, const RECT& frame) {
    const int64_t left = mapX(box.left);
    const int64_t right = mapX(box.right);
    const int64_t top = mapY(box.top);
    const int64_t bottom = mapY(box.bottom);
    vanished_ = isEmptyRect(box) || left >= right || top >= bottom;
    area_ = {};
    if (!vanished_ && left < frame.right && right > frame.left && top < frame.bottom && bottom > frame.top) {
      area_ = {clamped(left, frame.left, frame.right), clamped(top, frame.top, frame.bottom),
               clamped(right, frame.left, frame.right), clamped(bottom, frame.top, frame.bottom)};
    }
    whole_ = left >= frame.left && right <= frame.right && top >= frame.top && bottom <= frame.bottom;
    nextRow_ = area_.top;
    return builder_.start(area_);
  }

  // Nothing is left of the bounding box after scaling.
  [[nodiscard]] bool vanished() const { return vanished_; }

  void beginBand(int top, int bottom) {
    top_ = std::max(clamped(mapY(top), area_.top, area_.bottom), nextRow_);
    bottom_ = clamped(mapY(bottom), area_.top, area_.bottom);
  }

  void addRun(int start, int end) {
    if (top_ >= bottom_) return;
    builder_.addRun(clamped(mapX(start), area_.left, area_.right), clamped(mapX(end), area_.left, area_.right));
  }

  [[nodiscard]] int endBand() {
    if (top_ >= bottom_) return KSUCCESS;
    if (const int status = builder_.endRow(top_); status != KSUCCESS) return status;
    for (int y = top_ + 1; y < bottom_; ++y) {
      if (const int status = builder_.repeatRow(y); status != KSUCCESS) return status;
    }
    nextRow_ = bottom_;
    return KSUCCESS;
  }

  // The bounds of a scaled shape are its scaled bounds, unless it had to be cut.
  [[nodiscard]] int finish(OwnedRegion& region) {
    return builder_.finish(region, whole_ ? RegionBuilder::Bounds::asStarted : RegionBuilder::Bounds::ofRuns);
  }

 private:
  static int clamped(int64_t edge, int lowest, int highest) {
    return static_cast<int>(std::clamp<int64_t>(edge, lowest, highest));
  }
  [[nodiscard]] int64_t mapX(int edge) const {
    return mapped(edge, scale_.xOffset, scale_.xNumerator, scale_.xDenominator);
  }
  [[nodiscard]] int64_t mapY(int edge) const {
    return mapped(edge, scale_.yOffset, scale_.yNumerator, scale_.yDenominator);
  }

  ShapeScale scale_;
  RegionBuilder builder_;
  RECT area_ = {};  // of the frame, where the shape can have pixels
  bool vanished_ = false;
  bool whole_ = false;
  int nextRow_ = 0;
  int top_ = 0;  // the band being built
  int bottom_ = 0;
};

int addRects(ScaledBuilder& builder, const RECT* rects, unsigned count) {
  for (unsigned i = 0; i < count;) {
    const RECT& first = rects[i];
    builder.beginBand(first.top, first.bottom);
    for (; i < count && rects[i].top == first.top; ++i) builder.addRun(rects[i].left, rects[i].right);
    if (const int status = builder.endBand(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

int addRows(ScaledBuilder& builder, const BitmapRegion& region) {
  for (int y = region.bounds.top; y < region.bounds.bottom; ++y) {
    const Segments row = regionRow(region, y);
    builder.beginBand(y, y + 1);
    for (unsigned i = 0; i < row.count; i += 2) builder.addRun(row.values[i], row.values[i + 1]);
    if (const int status = builder.endBand(); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// The frame a shape is given in.
struct ShapeFrame {
  ShapeScale scale;
  int perspective;
  ImageSize size;
};

int openFrame(ShapeFrame& frame, const BitmapHandle& bitmap, const RegionXForm* xform) {
  frame = {{1, 1, 1, 1}, bitmap.ViewPerspective, {bitmap.Width, bitmap.Height}};
  if (xform == nullptr) return KSUCCESS;
  if (!isValid(*xform)) return KERR_BAD_PARAMETER;
  frame.scale = {xform->XScaleNumerator,   xform->XScaleDenominator, xform->YScaleNumerator,
                 xform->YScaleDenominator, xform->XOffset,           xform->YOffset};
  frame.perspective = xform->ViewPerspective;
  frame.size = sizeInFrame(bitmap, xform->ViewPerspective);
  return KSUCCESS;
}

// Builds a shape of the given bounding box; `add(builder)` feeds its bands.
template <typename Add>
int buildShape(OwnedRegion& shape, const BitmapHandle& bitmap, const RegionXForm* xform, const RECT& box, Add add) {
  shape.reset();
  ShapeFrame frame;
  if (const int status = openFrame(frame, bitmap, xform); status != KSUCCESS) return status;
  ScaledBuilder builder(frame.scale);
  const RECT room = {0, 0, std::max(frame.size.width, 0), std::max(frame.size.height, 0)};
  if (const int status = builder.start(box, room); status != KSUCCESS) return status;
  if (builder.vanished()) return KSUCCESS;
  if (const int status = add(builder); status != KSUCCESS) return status;
  OwnedRegion built;
  if (const int status = builder.finish(built); status != KSUCCESS) return status;
  const int status = convertRegion(built, frame.perspective, bitmap.ViewPerspective, frame.size);
  if (status == KSUCCESS) shape = std::move(built);
  return status;
}

}  // namespace

int shapeFromRects(OwnedRegion& shape, const BitmapHandle& bitmap, const RegionXForm* xform, const RECT& box,
                   const RECT* rects, unsigned count) {
  return buildShape(shape, bitmap, xform, box, [&](ScaledBuilder& builder) { return addRects(builder, rects, count); });
}

int shapeFromRegion(OwnedRegion& shape, const BitmapHandle& bitmap, const RegionXForm* xform,
                    const BitmapRegion& region) {
  return buildShape(shape, bitmap, xform, region.bounds,
                    [&](ScaledBuilder& builder) { return addRows(builder, region); });
}

int scaleRuns(OwnedRegion& scaled, const BitmapRegion& region, const ShapeScale& scale, const RECT& frame) {
  ScaledBuilder builder(scale);
  if (const int status = builder.start(region.bounds, frame); status != KSUCCESS) return status;
  if (!builder.vanished()) {
    if (const int status = addRows(builder, region); status != KSUCCESS) return status;
  }
  return builder.finish(scaled);
}

}  // namespace zavo
