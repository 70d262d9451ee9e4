// What playback does to the target. Positions of frames are those on the picture as seen, whatever the perspective of
// target and frame; the rectangles handed on are stored target coordinates.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

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

unsigned width(const RECT& rect) {
  return static_cast<unsigned>(rect.right) - static_cast<unsigned>(rect.left);
}
unsigned height(const RECT& rect) {
  return static_cast<unsigned>(rect.bottom) - static_cast<unsigned>(rect.top);
}

// Moves a rectangle of a bitmap as seen to the bitmap's place, in stored target coordinates. False when it does not
// meet the target: positions so far off may not fit in 32 bits.
bool moveOntoTarget(RECT& place, const PlaybackState& playback, const BitmapHandle& bitmap, const RECT& seen) {
  const ImageSize target = sizeInFrame(*playback.target, VIEW_UPRIGHT);
  const int64_t left = int64_t{seen.left} + bitmap.PlaybackLeft;
  const int64_t top = int64_t{seen.top} + bitmap.PlaybackTop;
  const int64_t right = int64_t{seen.right} + bitmap.PlaybackLeft;
  const int64_t bottom = int64_t{seen.bottom} + bitmap.PlaybackTop;
  if (left >= right || top >= bottom || right <= 0 || bottom <= 0) return false;
  if (left >= target.width || top >= target.height) return false;
  place = {static_cast<LONG>(left), static_cast<LONG>(top), static_cast<LONG>(right), static_cast<LONG>(bottom)};
  rectToBitmap(*playback.target, VIEW_UPRIGHT, place);
  return true;
}

// The whole of a frame, cut nowhere.
bool placeOfFrame(RECT& place, const PlaybackState& playback, const BitmapHandle& frame) {
  const ImageSize size = sizeInFrame(frame, VIEW_UPRIGHT);
  return moveOntoTarget(place, playback, frame, {0, 0, size.width, size.height});
}

// The area of a bitmap, the target or a frame, is the bounds of its region, moved by its own playback position: the
// target's counts too, as when the target was copied from a frame.
void addToUpdateRect(PlaybackState& playback, BitmapHandle& bitmap) {
  RECT seen;
  if (Zv_GetBitmapRgnBounds(&bitmap, nullptr, &seen) != KSUCCESS) return;
  rectFromBitmap(bitmap, VIEW_UPRIGHT, seen);
  RECT place;
  if (!moveOntoTarget(place, playback, bitmap, seen)) return;
  const RECT all = {0, 0, playback.target->Width, playback.target->Height};
  RECT area;
  if (IntersectRect(&area, &place, &all)) UnionRect(&playback.updateRect, &playback.updateRect, &area);
}

// Lets a bitmap have another region for a moment: a copy stands in for its own, to be changed, while this lives.
class RegionScope {
 public:
  explicit RegionScope(BitmapHandle& bitmap)
      : bitmap_(bitmap), own_(bitmap.Region), status_(copyRegion(bitmap, bitmap, 0, 0)) {}
  RegionScope(const RegionScope&) = delete;
  RegionScope& operator=(const RegionScope&) = delete;
  ~RegionScope() {
    freeRegion(bitmap_);
    bitmap_.Region = own_;
  }

  [[nodiscard]] int status() const { return status_; }

 private:
  BitmapHandle& bitmap_;
  BitmapRegion* own_;
  int status_;
};

bool samePixelFormat(const BitmapHandle& frame, const BitmapHandle& target) {
  if (frame.BitsPerPixel != target.BitsPerPixel) return false;
  if (frame.BitsPerPixel > 8) return frame.ColorOrder == target.ColorOrder;
  RGBQUAD frameColors[256], targetColors[256];
  readPalette(frame, frameColors);
  readPalette(target, targetColors);
  const size_t count = std::min<size_t>(frame.ColorCount, std::size(frameColors));
  return memcmp(frameColors, targetColors, count * sizeof(RGBQUAD)) == 0;
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

// Puts a picture at its place on the target, through the region it has.
void copyOnto(BitmapHandle& target, const RECT& place, BitmapHandle* picture) {
  (void)Zv_CombineBitmap(&target, place.left, place.top, static_cast<int>(width(place)),
                         static_cast<int>(height(place)), picture, 0, 0, COMBINE_COPY);
}

bool drawWithinRegion(BitmapHandle& target, BitmapHandle& frame, const RECT& place) {
  if (samePixelFormat(frame, target)) {
    copyOnto(target, place, &frame);
    return true;
  }
  OwnedBitmap converted;
  if (convertToTarget(converted.get(), &frame, target) != KSUCCESS) return false;
  copyOnto(target, place, converted.get());
  return true;
}

// Leaves out the pixels of the transparent colour.
bool drawOpaque(BitmapHandle& target, BitmapHandle& frame, const RECT& place) {
  const RegionScope opaque(frame);
  if (opaque.status() != KSUCCESS) return false;
  if (Zv_SetBitmapRgnColor(&frame, frame.PlaybackTransparentColor, CombineAndNotRegion) != KSUCCESS) return false;
  return drawWithinRegion(target, frame, place);
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
  BitmapHandle& target = *playback.target;
  const bool keepsWhatIsUnder = frame.PlaybackDisposal == disposeToPrevious;
  if (keepsWhatIsUnder) dropSaved(playback);
  RECT place;
  if (!placeOfFrame(place, playback, frame)) return;
  if (keepsWhatIsUnder) {
    (void)Zv_CopyBitmapRect(&playback.saved, &target, place.left, place.top, width(place), height(place));
  }
  const bool isTransparent = (frame.Flags & BMF_PLAYBACK_TRANSPARENT) != 0;
  const bool drawn = isTransparent ? drawOpaque(target, frame, place) : drawWithinRegion(target, frame, place);
  if (drawn) addToUpdateRect(playback, frame);
}

void disposeFrame(PlaybackState& playback, BitmapHandle& frame) {
  BitmapHandle& target = *playback.target;
  const bool toBackground = frame.PlaybackDisposal == disposeToBackground;
  const bool toPrevious = frame.PlaybackDisposal == disposeToPrevious;
  RECT place;
  if ((!toBackground && !toPrevious) || !placeOfFrame(place, playback, frame)) return;
  if (toBackground) {
    const RegionScope cleared(target);
    if (cleared.status() == KSUCCESS && Zv_SetBitmapRgnRect(&target, nullptr, &place, CombineAnd) == KSUCCESS) {
      (void)Zv_FillBitmap(&target, target.PlaybackBackground);
    }
  } else {
    if (isAllocated(&playback.saved)) copyOnto(target, place, &playback.saved);
    dropSaved(playback);
  }
  addToUpdateRect(playback, frame);
}

}  // namespace zavo
