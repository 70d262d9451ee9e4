#include "playback/film_model.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

#include "support/seen_picture.h"

namespace zavotest {
namespace {

// What Zv_FillBitmap writes for the target's background.
uint32_t backgroundPixel(BitmapHandle& target) {
  TestBitmap dot;
  EXPECT_EQ(Zv_DupBitmapNewDim(&dot, &target, 1, 1, target.BitsPerPixel, DUP_STORAGE | DUP_PALETTE), KSUCCESS);
  dot.Region = nullptr;
  EXPECT_EQ(Zv_FillBitmap(&dot, target.PlaybackBackground), KSUCCESS);
  return pictureOf(dot).at(0, 0);
}

// The frame's pixels as they go onto the target.
Picture inTargetForm(BitmapHandle& frame, const BitmapHandle& target) {
  const bool indexed = target.BitsPerPixel <= 8;
  RGBQUAD palette[256] = {}, own[256] = {};
  const unsigned count = indexed ? Zv_GetPaletteEntries(target.Palette, 0, 256, palette) : 0;
  if (frame.BitsPerPixel == target.BitsPerPixel) {
    if (indexed) Zv_GetPaletteEntries(frame.Palette, 0, 256, own);
    const bool same = indexed ? memcmp(own, palette, sizeof own) == 0 : frame.ColorOrder == target.ColorOrder;
    if (same) return seenValuesOf(frame);
  }
  const unsigned order = target.ColorOrder == ORDER_BLUE_FIRST ? COLORRES_BLUE_FIRST : 0;
  const unsigned options = indexed ? COLORRES_NEAREST | COLORRES_GIVEN_PALETTE : order;
  TestBitmap converted;
  EXPECT_EQ(Zv_ColorResBitmap(&frame, &converted, target.BitsPerPixel, options, palette, count), KSUCCESS);
  return seenValuesOf(converted);
}

// The region without the transparent colour.
Picture drawnPixels(BitmapHandle& frame) {
  TestBitmap copy;
  EXPECT_EQ(Zv_CopyBitmap(&copy, &frame), KSUCCESS);
  if ((frame.Flags & BMF_PLAYBACK_TRANSPARENT) != 0) {
    EXPECT_EQ(Zv_SetBitmapRgnColor(&copy, frame.PlaybackTransparentColor, CombineAndNotRegion), KSUCCESS);
  }
  return seenRegionOf(copy);
}

RECT seenArea(BitmapHandle& bitmap) {
  RECT bounds = {};
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&bitmap, nullptr, &bounds), KSUCCESS);
  Zv_RectFromBitmap(&bitmap, VIEW_UPRIGHT, &bounds);
  return bounds;
}

}  // namespace

FilmModel::FilmModel(BitmapHandle& target)
    : seen(seenValuesOf(target)),
      target_(target),
      background_(backgroundPixel(target)),
      region_(seenRegionOf(target)) {}

void FilmModel::append(BitmapHandle& frame) {
  frames_.push_back({.place = {frame.PlaybackLeft, frame.PlaybackTop},
                     .rowCount = frame.Height,
                     .pixels = inTargetForm(frame, target_),
                     .drawn = drawnPixels(frame),
                     .area = seenArea(frame),
                     .delay = frame.PlaybackDelay,
                     .disposal = frame.PlaybackDisposal,
                     .waitsForUser = (frame.Flags & BMF_PLAYBACK_WAITUSER) != 0});
  isLoading_ = true;
  rows_.clear();
  if (state == PB_END) state = PB_RENDER;
}

void FilmModel::validate(int64_t first, int64_t count) {
  if (!isLoading_) return;
  const int64_t end = std::min<int64_t>(first + count, frames_.back().rowCount);
  for (int64_t row = std::max<int64_t>(first, 0); row < end; ++row) rows_.insert(row);
  if (static_cast<int>(rows_.size()) == frames_.back().rowCount) isLoading_ = false;
}

bool FilmModel::rowsAreMissing() const {
  return isLoading_ && index + 1 == frameCount();
}

void FilmModel::addArea(RECT area, POINT place) {
  OffsetRect(&area, place.x, place.y);
  const RECT all = {0, 0, seen.width, seen.height};
  if (IntersectRect(&area, &area, &all)) UnionRect(&update, &update, &area);
}

template <typename Visit>
void FilmModel::forFramePixels(Visit visit) {
  for (int y = 0; y < seen.height; ++y) {
    for (int x = 0; x < seen.width; ++x) {
      const int64_t frameX = int64_t{x} - frame().place.x;
      const int64_t frameY = int64_t{y} - frame().place.y;
      if (frameX < 0 || frameY < 0 || frameX >= frame().pixels.width || frameY >= frame().pixels.height) continue;
      if (region_.at(x, y) != 0) visit(x, y, static_cast<int>(frameX), static_cast<int>(frameY));
    }
  }
}

void FilmModel::draw() {
  saved_ = seen;
  forFramePixels([&](int x, int y, int frameX, int frameY) {
    if (frame().drawn.at(frameX, frameY) != 0) seen.at(x, y) = frame().pixels.at(frameX, frameY);
  });
  addArea(frame().area, frame().place);
}

void FilmModel::dispose() {
  if (frame().disposal != 2 && frame().disposal != 3) return;
  forFramePixels(
      [&](int x, int y, int, int) { seen.at(x, y) = frame().disposal == 2 ? background_ : saved_.at(x, y); });
  addArea(frame().area, frame().place);
}

void FilmModel::step(uint32_t ticks) {
  switch (state) {
    case PB_PRECLEAR:
      for (size_t i = 0; i < seen.pixels.size(); ++i) {
        if (region_.pixels[i] != 0) seen.pixels[i] = background_;
      }
      addArea(seenArea(target_), {target_.PlaybackLeft, target_.PlaybackTop});
      state = PB_POSTCLEAR;
      break;
    case PB_POSTCLEAR:
    case PB_NEXT:
      ++index;
      state = index < frameCount() ? PB_RENDER : PB_END;
      break;
    case PB_RENDER:
    case PB_WAITLINES:
      state = rowsAreMissing() ? PB_WAITLINES : index < frameCount() ? PB_POSTRENDER : PB_END;
      if (state == PB_POSTRENDER) draw();
      break;
    case PB_POSTRENDER:
      delayStart_ = ticks;
      if (frame().delay > 0) {
        state = frame().waitsForUser ? PB_WAITINPUTDELAY : PB_WAITDELAY;
      } else {
        state = frame().waitsForUser ? PB_WAITINPUT : PB_DISPOSE;
      }
      break;
    case PB_WAITDELAY:
    case PB_WAITINPUTDELAY:
      if (ticks - delayStart_ >= frame().delay) state = PB_DISPOSE;
      break;
    case PB_DISPOSE:
      dispose();
      state = PB_NEXT;
      break;
    case PB_END:  // round again, over what is there
      index = 0;
      state = PB_RENDER;
      break;
    default:
      break;
  }
}

void FilmModel::cancelWait() {
  if (state == PB_WAITINPUT || state == PB_WAITDELAY || state == PB_WAITINPUTDELAY) state = PB_DISPOSE;
}

void FilmModel::seek(int wanted, uint32_t ticks) {
  isLoading_ = false;  // who seeks takes the rows as they are
  if (index > wanted) {
    state = PB_PRECLEAR;
    index = -1;
  }
  while (index < wanted) {
    step(ticks);
    cancelWait();
  }
}

unsigned FilmModel::delay(uint32_t ticks) const {
  const bool waits = state == PB_WAITDELAY || state == PB_WAITINPUTDELAY;
  return waits && ticks - delayStart_ < frame().delay ? frame().delay - (ticks - delayStart_) : 0;
}

}  // namespace zavotest
