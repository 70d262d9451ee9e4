// View perspective: how the stored image lies in the picture a user sees, and coordinates in either.
//
// A frame is the coordinate system of one perspective code. Points name pixels, rectangles name pixel edges.
#pragma once

#include <zavo.h>

namespace zavo {

struct ImageSize {
  int width;
  int height;
};

// What turns a stored image of this code upright: the flip first, then a clockwise turn.
[[nodiscard]] constexpr bool isFlipped(int perspective) {
  return perspective == VIEW_BOTTOM_UP;
}
// Degrees.
[[nodiscard]] constexpr int angleOf(int perspective) {
  return perspective == VIEW_TURNED_90 ? 90 : perspective == VIEW_TURNED_270 ? 270 : 0;
}

// Stored rows run along the picture's columns.
[[nodiscard]] constexpr bool isRotated(int perspective) {
  return perspective == VIEW_TURNED_90 || perspective == VIEW_TURNED_270;
}
[[nodiscard]] constexpr bool isUpright(int perspective) {
  return !isFlipped(perspective) && !isRotated(perspective);
}

// The way from one frame to another: the flip first, then a clockwise turn of 0, 90, 180 or 270 degrees.
struct Passage {
  bool flip;
  int angle;
};
[[nodiscard]] Passage passage(int from, int to);

// The two codes store a picture the same way round.
[[nodiscard]] constexpr bool sameFrame(int a, int b) {
  return a == b || (isUpright(a) && isUpright(b));
}

// The bitmap's size as it lies in the frame of `perspective`.
[[nodiscard]] ImageSize sizeInFrame(const BitmapHandle& bitmap, int perspective);

// Between any two frames; `size` is the image's size in the frame `from`. Values that pass 32 bits wrap.
void convertPoint(int& x, int& y, int from, int to, ImageSize size);
void convertRect(RECT& rect, int from, int to, ImageSize size);

// Between the bitmap's own frame and another.
void pointFromBitmap(const BitmapHandle& bitmap, int perspective, int& x, int& y);
void pointToBitmap(const BitmapHandle& bitmap, int perspective, int& x, int& y);
void rectFromBitmap(const BitmapHandle& bitmap, int perspective, RECT& rect);
void rectToBitmap(const BitmapHandle& bitmap, int perspective, RECT& rect);

}  // namespace zavo
