#include "playback/film_model.h"

#include <algorithm>
#include <gtest/gtest.h>

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

bool sameColors(const std::vector<PALETTEENTRY>& a, const std::vector<PALETTEENTRY>& b) {
  return std::ranges::equal(a, b, [](const PALETTEENTRY& x, const PALETTEENTRY& y) {
    return x.peRed == y.peRed && x.peGreen == y.peGreen && x.peBlue == y.peBlue;
  });
}

bool sameForm(const BitmapHandle& frame, const BitmapHandle& target) {
  if (frame.BitsPerPixel != target.BitsPerPixel) return false;
  return frame.BitsPerPixel > 8 ? frame.ColorOrder == target.ColorOrder : sameColors(colorsOf(frame), colorsOf(target));
}

// The frame's pixels as they go onto the target.
Picture inTargetForm(BitmapHandle& frame, const BitmapHandle& target) {
  if (sameForm(frame, target)) return seenPicture(frame);
  TestBitmap converted;
  RGBQUAD palette[256];
  const bool indexed = target.BitsPerPixel <= 8;
  const unsigned colors = indexed ? Zv_GetPaletteEntries(target.Palette, 0, target.ColorCount, palette) : 0;
  const unsigned options = indexed                                 ? COLORRES_NEAREST | COLORRES_GIVEN_PALETTE
                           : target.ColorOrder == ORDER_BLUE_FIRST ? COLORRES_BLUE_FIRST
                                                                   : 0;
  EXPECT_EQ(Zv_ColorResBitmap(&frame, &converted, target.BitsPerPixel, options, palette, colors), KSUCCESS);
  return seenPicture(converted);
}

// Says of an index or of a colour whether it is the frame's transparent one.
bool isTransparent(BitmapHandle& frame, int row, int column, uint32_t pixel) {
  if ((frame.Flags & BMF_PLAYBACK_TRANSPARENT) == 0) return false;
  const COLORREF color = frame.PlaybackTransparentColor;
  if (frame.BitsPerPixel > 8) return (Zv_GetPixelColor(&frame, row, column) & 0xFFFFFF) == (color & 0xFFFFFF);
  const std::vector<PALETTEENTRY> colors = colorsOf(frame);
  if (color >> 24 == 1) return pixel == (color & ((1u << frame.BitsPerPixel) - 1));
  const auto found = std::ranges::find_if(
      colors, [&](const PALETTEENTRY& entry) { return RGB(entry.peRed, entry.peGreen, entry.peBlue) == color; });
  return found != colors.end() && pixel == static_cast<uint32_t>(found - colors.begin());
}

}  // namespace

SIZE seenSize(const BitmapHandle& bitmap) {
  const bool turned = bitmap.ViewPerspective == VIEW_TURNED_90 || bitmap.ViewPerspective == VIEW_TURNED_270;
  return turned ? SIZE{bitmap.Height, bitmap.Width} : SIZE{bitmap.Width, bitmap.Height};
}

POINT storedPixel(const BitmapHandle& bitmap, int x, int y) {
  switch (bitmap.ViewPerspective) {
    case VIEW_BOTTOM_UP:
      return {x, bitmap.Height - 1 - y};
    case VIEW_TURNED_90:  // a clockwise quarter turn makes the stored picture upright
      return {y, bitmap.Height - 1 - x};
    case VIEW_TURNED_270:
      return {bitmap.Width - 1 - y, x};
    default:
      return {x, y};
  }
}

Picture seenPicture(BitmapHandle& bitmap) {
  const Picture stored = pictureOf(bitmap);
  const SIZE size = seenSize(bitmap);
  Picture seen(size.cx, size.cy);
  for (int y = 0; y < seen.height; ++y) {
    for (int x = 0; x < seen.width; ++x) {
      const POINT from = storedPixel(bitmap, x, y);
      seen.at(x, y) = stored.at(from.x, from.y);
    }
  }
  return seen;
}

RECT seenRect(const BitmapHandle& bitmap, const RECT& stored) {
  const SIZE size = seenSize(bitmap);
  RECT seen = {};
  for (int y = 0; y < size.cy; ++y) {
    for (int x = 0; x < size.cx; ++x) {
      if (!PtInRect(&stored, storedPixel(bitmap, x, y))) continue;
      const RECT pixel = {x, y, x + 1, y + 1};
      UnionRect(&seen, &seen, &pixel);
    }
  }
  return seen;
}

FrameModel modelOf(BitmapHandle& frame, BitmapHandle& target) {
  FrameModel model{.place = {frame.PlaybackLeft, frame.PlaybackTop},
                   .pixels = inTargetForm(frame, target),
                   .drawn = {},
                   .area = {},
                   .delay = frame.PlaybackDelay,
                   .disposal = frame.PlaybackDisposal,
                   .waitsForUser = (frame.Flags & BMF_PLAYBACK_WAITUSER) != 0};
  const Picture own = seenPicture(frame);
  for (int y = 0; y < own.height; ++y) {
    for (int x = 0; x < own.width; ++x) {
      const POINT at = storedPixel(frame, x, y);
      const bool inRegion = Zv_IsPtInBitmapRgn(&frame, at.y, at.x) == 1;
      model.drawn.push_back(inRegion && !isTransparent(frame, at.y, at.x, own.at(x, y)));
    }
  }
  RECT bounds;
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&frame, nullptr, &bounds), KSUCCESS);
  model.area = seenRect(frame, bounds);
  return model;
}

FilmModel::FilmModel(BitmapHandle& target)
    : seen(seenPicture(target)),
      targetPlace_{target.PlaybackLeft, target.PlaybackTop},
      background_(backgroundPixel(target)) {
  for (int y = 0; y < seen.height; ++y) {
    for (int x = 0; x < seen.width; ++x) {
      const POINT at = storedPixel(target, x, y);
      region_.push_back(Zv_IsPtInBitmapRgn(&target, at.y, at.x) == 1);
    }
  }
  RECT bounds;
  EXPECT_EQ(Zv_GetBitmapRgnBounds(&target, nullptr, &bounds), KSUCCESS);
  targetArea_ = seenRect(target, bounds);
}

void FilmModel::addArea(RECT area, POINT place) {
  OffsetRect(&area, place.x, place.y);
  const RECT all = {0, 0, seen.width, seen.height};
  if (IntersectRect(&area, &area, &all)) UnionRect(&update, &update, &area);
}

template <typename Visit>
void FilmModel::forFramePixels(Visit visit) {
  for (int y = 0; y < frame().pixels.height; ++y) {
    for (int x = 0; x < frame().pixels.width; ++x) {
      const int targetX = frame().place.x + x;
      const int targetY = frame().place.y + y;
      if (targetX < 0 || targetY < 0 || targetX >= seen.width || targetY >= seen.height) continue;
      if (inRegion(targetX, targetY)) visit(targetX, targetY, x, y);
    }
  }
}

void FilmModel::draw() {
  if (frame().disposal == 3) saved_ = seen;
  forFramePixels([&](int x, int y, int frameX, int frameY) {
    if (!frame().drawn[static_cast<size_t>(frameY * frame().pixels.width + frameX)]) return;
    seen.at(x, y) = frame().pixels.at(frameX, frameY);
  });
  addArea(frame().area, frame().place);
}

void FilmModel::dispose() {
  if (frame().disposal == 2) forFramePixels([&](int x, int y, int, int) { seen.at(x, y) = background_; });
  if (frame().disposal == 3 && saved_)
    forFramePixels([&](int x, int y, int, int) { seen.at(x, y) = saved_->at(x, y); });
  if (frame().disposal == 2 || frame().disposal == 3) addArea(frame().area, frame().place);
}

void FilmModel::next() {
  ++index;
  state = static_cast<size_t>(index) < frames_.size() ? PB_RENDER : PB_END;
}

void FilmModel::step(uint32_t ticks) {
  switch (state) {
    case PB_PRECLEAR:
      for (int y = 0; y < seen.height; ++y) {
        for (int x = 0; x < seen.width; ++x) {
          if (inRegion(x, y)) seen.at(x, y) = background_;
        }
      }
      addArea(targetArea_, targetPlace_);
      state = PB_POSTCLEAR;
      break;
    case PB_POSTCLEAR:
    case PB_NEXT:
      next();
      break;
    case PB_RENDER:
      draw();
      state = PB_POSTRENDER;
      break;
    case PB_POSTRENDER:
      if (frame().delay > 0) {
        delayStart_ = ticks;
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
    case PB_END:
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

}  // namespace zavotest
