// What playback does to the target. Positions of frames are those on the picture as seen, whatever the perspective of
// target and frame; the rectangles handed on are stored target coordinates.
#include <cstring>

#include "color/palettes.h"
#include "core/owners.h"
#include "core/perspective.h"
#include "core/region_services.h"
#include "core/status.h"
#include "playback/playback.h"

namespace zavo {
namespace {

constexpr unsigned disposeToBackground = 2;
constexpr unsigned disposeToPrevious = 3;

int width(const RECT& rect) {
  return rect.right - rect.left;
}
int height(const RECT& rect) {
  return rect.bottom - rect.top;
}

// A rectangle of a frame as seen, moved to the frame's place and brought into stored target coordinates.
RECT onTarget(const PlaybackState& playback, const BitmapHandle& frame, RECT seen) {
  OffsetRect(&seen, frame.PlaybackLeft, frame.PlaybackTop);
  rectToBitmap(*playback.target, VIEW_UPRIGHT, seen);
  return seen;
}

RECT frameRect(const PlaybackState& playback, const BitmapHandle& frame) {
  const ImageSize size = sizeInFrame(frame, VIEW_UPRIGHT);
  return onTarget(playback, frame, {0, 0, size.width, size.height});
}

// The area of a bitmap, the target or a frame, is that of its region.
void addToUpdateRect(PlaybackState& playback, BitmapHandle& bitmap) {
  RECT seen;
  if (Zv_GetBitmapRgnBounds(&bitmap, nullptr, &seen) != KSUCCESS) return;
  rectFromBitmap(bitmap, VIEW_UPRIGHT, seen);
  const RECT stored = onTarget(playback, bitmap, seen);
  const RECT all = {0, 0, playback.target->Width, playback.target->Height};
  RECT area;
  if (IntersectRect(&area, &stored, &all)) UnionRect(&playback.updateRect, &playback.updateRect, &area);
}

// A copy of a record with a region of its own, for work that needs another region for a moment. Storage and palette
// stay the original's.
class RegionScope {
 public:
  explicit RegionScope(BitmapHandle& bitmap) : original_(bitmap), handle_(bitmap) {
    status_ = copyRegion(handle_, bitmap, 0, 0);
  }
  RegionScope(const RegionScope&) = delete;
  RegionScope& operator=(const RegionScope&) = delete;
  ~RegionScope() {
    freeRegion(handle_);
    original_.DataSize = handle_.DataSize;  // run-length rows written through the copy may have grown the heap
  }

  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] BitmapHandle* get() { return &handle_; }

 private:
  BitmapHandle& original_;
  BitmapHandle handle_;
  int status_;
};

bool samePixelFormat(const BitmapHandle& frame, const BitmapHandle& target) {
  if (frame.BitsPerPixel != target.BitsPerPixel) return false;
  if (frame.BitsPerPixel > 8) return frame.ColorOrder == target.ColorOrder;
  RGBQUAD frameColors[256], targetColors[256];
  readPalette(frame, frameColors);
  readPalette(target, targetColors);
  return memcmp(frameColors, targetColors, frame.ColorCount * sizeof(RGBQUAD)) == 0;
}

int convertToTarget(BitmapHandle* converted, BitmapHandle* frame, const BitmapHandle& target) {
  if (target.BitsPerPixel > 8) {
    const unsigned order = target.ColorOrder == ORDER_BLUE_FIRST ? COLORRES_BLUE_FIRST : 0;
    return Zv_ColorResBitmap(frame, converted, target.BitsPerPixel, order, nullptr, 0);
  }
  RGBQUAD colors[256];
  readPalette(target, colors);
  return Zv_ColorResBitmap(frame, converted, target.BitsPerPixel, COLORRES_NEAREST | COLORRES_GIVEN_PALETTE, colors,
                           target.ColorCount);
}

// Puts a picture that lies as the target does onto the target.
void copyOnto(BitmapHandle& target, const RECT& place, BitmapHandle* picture) {
  (void)Zv_CombineBitmap(&target, place.left, place.top, width(place), height(place), picture, 0, 0, COMBINE_COPY);
}

// The frame's pixels that are drawn: those of its region that are not of the transparent colour.
int limitToDrawn(RegionScope& frame) {
  if ((frame.get()->Flags & BMF_PLAYBACK_TRANSPARENT) == 0) return KSUCCESS;
  return Zv_SetBitmapRgnColor(frame.get(), frame.get()->PlaybackTransparentColor, CombineAndNotRegion);
}

void drawPixels(PlaybackState& playback, BitmapHandle& frame) {
  RegionScope drawn(frame);
  if (drawn.status() != KSUCCESS || limitToDrawn(drawn) != KSUCCESS) return;
  OwnedBitmap converted;
  BitmapHandle* picture = drawn.get();
  if (!samePixelFormat(frame, *playback.target)) {
    if (convertToTarget(converted.get(), picture, *playback.target) != KSUCCESS) return;
    picture = converted.get();
  }
  copyOnto(*playback.target, frameRect(playback, frame), picture);
  addToUpdateRect(playback, frame);
}

}  // namespace

void dropSaved(PlaybackState& playback) {
  Zv_FreeBitmap(&playback.saved);
  playback.saved = {};
}

void clearTarget(PlaybackState& playback) {
  (void)Zv_FillBitmap(playback.target, playback.target->PlaybackBackground);
  addToUpdateRect(playback, *playback.target);
}

void drawFrame(PlaybackState& playback, BitmapHandle& frame) {
  if (frame.PlaybackDisposal == disposeToPrevious) {
    dropSaved(playback);
    const RECT place = frameRect(playback, frame);
    (void)Zv_CopyBitmapRect(&playback.saved, playback.target, place.left, place.top,
                            static_cast<unsigned>(width(place)), static_cast<unsigned>(height(place)));
  }
  drawPixels(playback, frame);
}

void disposeFrame(PlaybackState& playback, BitmapHandle& frame) {
  const RECT place = frameRect(playback, frame);
  if (frame.PlaybackDisposal == disposeToBackground) {
    RegionScope target(*playback.target);
    if (target.status() == KSUCCESS && Zv_SetBitmapRgnRect(target.get(), nullptr, &place, CombineAnd) == KSUCCESS) {
      (void)Zv_FillBitmap(target.get(), playback.target->PlaybackBackground);
    }
  } else if (frame.PlaybackDisposal == disposeToPrevious) {
    if (isAllocated(&playback.saved)) copyOnto(*playback.target, place, &playback.saved);
    dropSaved(playback);
  } else {
    return;
  }
  addToUpdateRect(playback, frame);
}

}  // namespace zavo
