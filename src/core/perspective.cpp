// Points and rectangles between the frames of view perspectives.
#include "core/perspective.h"

namespace zavo {
namespace {

template <typename Integer>
Integer difference(Integer a, Integer b) {
  return static_cast<Integer>(static_cast<unsigned long>(a) - static_cast<unsigned long>(b));
}

}  // namespace

Passage passage(int from, int to) {
  if (from == to) return {false, 0};
  bool flip = isFlipped(from);
  int angle = angleOf(from);
  if (isFlipped(to)) {
    // The target's flip comes after the turn; done before it, it turns the other way round.
    flip = true;
    angle = 360 - angle;
  } else {
    angle -= angleOf(to);
  }
  if (angle < 0) angle += 360;
  if (angle >= 360) angle -= 360;
  return {flip, angle};
}

ImageSize sizeInFrame(const BitmapHandle& bitmap, int perspective) {
  if (isRotated(bitmap.ViewPerspective) != isRotated(perspective)) return {bitmap.Height, bitmap.Width};
  return {bitmap.Width, bitmap.Height};
}

void convertPoint(int& x, int& y, int from, int to, ImageSize size) {
  if (from == to) return;
  const auto [flip, angle] = passage(from, to);
  const int lastColumn = difference(size.width, 1);
  const int lastRow = difference(size.height, 1);
  if (flip) y = difference(lastRow, y);
  const int oldX = x;
  const int oldY = y;
  switch (angle) {
    case 90:
      x = difference(lastRow, oldY);
      y = oldX;
      return;
    case 180:
      x = difference(lastColumn, oldX);
      y = difference(lastRow, oldY);
      return;
    case 270:
      x = oldY;
      y = difference(lastColumn, oldX);
      return;
    default:
      return;
  }
}

void convertRect(RECT& rect, int from, int to, ImageSize size) {
  if (from == to) return;
  const auto [flip, angle] = passage(from, to);
  const LONG width = size.width;
  const LONG height = size.height;
  if (flip) rect = {rect.left, difference(height, rect.bottom), rect.right, difference(height, rect.top)};
  switch (angle) {
    case 90:
      rect = {difference(height, rect.bottom), rect.left, difference(height, rect.top), rect.right};
      return;
    case 180:
      rect = {difference(width, rect.right), difference(height, rect.bottom), difference(width, rect.left),
              difference(height, rect.top)};
      return;
    case 270:
      rect = {rect.top, difference(width, rect.right), rect.bottom, difference(width, rect.left)};
      return;
    default:
      return;
  }
}

void pointFromBitmap(const BitmapHandle& bitmap, int perspective, int& x, int& y) {
  convertPoint(x, y, bitmap.ViewPerspective, perspective, {bitmap.Width, bitmap.Height});
}

void pointToBitmap(const BitmapHandle& bitmap, int perspective, int& x, int& y) {
  convertPoint(x, y, perspective, bitmap.ViewPerspective, sizeInFrame(bitmap, perspective));
}

void rectFromBitmap(const BitmapHandle& bitmap, int perspective, RECT& rect) {
  convertRect(rect, bitmap.ViewPerspective, perspective, {bitmap.Width, bitmap.Height});
}

void rectToBitmap(const BitmapHandle& bitmap, int perspective, RECT& rect) {
  convertRect(rect, perspective, bitmap.ViewPerspective, sizeInFrame(bitmap, perspective));
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_PointFromBitmap(BitmapHandle* bitmap, int perspective, int* x, int* y) {
  if (bitmap == nullptr || x == nullptr || y == nullptr) return KERR_BAD_PARAMETER;
  pointFromBitmap(*bitmap, perspective, *x, *y);
  return KSUCCESS;
}

int ZAVO_CALL Zv_PointToBitmap(BitmapHandle* bitmap, int perspective, int* x, int* y) {
  if (bitmap == nullptr || x == nullptr || y == nullptr) return KERR_BAD_PARAMETER;
  pointToBitmap(*bitmap, perspective, *x, *y);
  return KSUCCESS;
}

int ZAVO_CALL Zv_RectFromBitmap(BitmapHandle* bitmap, int perspective, RECT* rect) {
  if (bitmap == nullptr || rect == nullptr) return KERR_BAD_PARAMETER;
  rectFromBitmap(*bitmap, perspective, *rect);
  return KSUCCESS;
}

int ZAVO_CALL Zv_RectToBitmap(BitmapHandle* bitmap, int perspective, RECT* rect) {
  if (bitmap == nullptr || rect == nullptr) return KERR_BAD_PARAMETER;
  rectToBitmap(*bitmap, perspective, *rect);
  return KSUCCESS;
}
