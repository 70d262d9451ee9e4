#include "zoom.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zavoview {

namespace {

constexpr double steps[] = {0.01, 0.02, 0.03, 0.05, 0.07, 0.10, 0.15, 0.20, 0.25, 1.0 / 3, 0.50, 2.0 / 3,
                            1,    1.5,  2,    3,    4,    6,    8,    12,   16,   24,      32};
/// The outline of a selection is a bitmap of the scaled picture's size: this bounds its memory.
constexpr double longestSide = 20000;

LONG scaledSide(LONG side, double scale) {
  return std::max(1L, std::lround(static_cast<double>(side) * scale));
}

/// Rounded down, for negative numbers too.
LONG scaleDown(LONG value, LONG numerator, LONG denominator) {
  const long long product = static_cast<long long>(value) * numerator;
  const long long quotient = product / denominator;
  return static_cast<LONG>(product % denominator < 0 ? quotient - 1 : quotient);
}

}  // namespace

void Zoom::setPicture(SIZE picture) {
  if (picture.cx != picture_.cx || picture.cy != picture_.cy) origin_ = {0, 0};
  picture_ = picture;
  if (fitting_)
    fitScale();
  else
    setScale(scale_, {0, 0});
}

void Zoom::setView(SIZE view) {
  view_ = view;
  if (fitting_) fitScale();
  clampOrigin();
}

void Zoom::fit() {
  fitting_ = true;
  fitScale();
}

void Zoom::fitScale() {
  scaled_ = picture_;
  if (scaled_.cx > view_.cx) scaled_ = {view_.cx, MulDiv(view_.cx, picture_.cy, picture_.cx)};
  if (scaled_.cy > view_.cy) scaled_ = {MulDiv(view_.cy, picture_.cx, picture_.cy), view_.cy};
  scaled_ = {std::max(1L, scaled_.cx), std::max(1L, scaled_.cy)};
  scale_ = static_cast<double>(scaled_.cx) / static_cast<double>(picture_.cx);
  origin_ = {0, 0};
}

void Zoom::zoomIn(POINT anchor) {
  const double* const next = std::upper_bound(std::begin(steps), std::end(steps), scale_ * 1.001);
  if (next != std::end(steps)) setScale(*next, anchor);
}

void Zoom::zoomOut(POINT anchor) {
  const double* const next = std::lower_bound(std::begin(steps), std::end(steps), scale_ * 0.999);
  if (next != std::begin(steps)) setScale(next[-1], anchor);
}

void Zoom::setScale(double scale, POINT anchor) {
  const RECT before = pictureRect();
  const SIZE old = scaled_;
  fitting_ = false;
  scale_ = std::min(scale, longestSide / static_cast<double>(std::max(picture_.cx, picture_.cy)));
  scaled_ = {scaledSide(picture_.cx, scale_), scaledSide(picture_.cy, scale_)};
  origin_.x = scaleDown(anchor.x - before.left, scaled_.cx, old.cx) - anchor.x;
  origin_.y = scaleDown(anchor.y - before.top, scaled_.cy, old.cy) - anchor.y;
  clampOrigin();
}

void Zoom::scrollTo(POINT origin) {
  origin_ = origin;
  clampOrigin();
}

void Zoom::clampOrigin() {
  origin_.x = std::clamp(origin_.x, 0L, std::max(0L, scaled_.cx - view_.cx));
  origin_.y = std::clamp(origin_.y, 0L, std::max(0L, scaled_.cy - view_.cy));
}

RECT Zoom::pictureRect() const {
  const LONG left = scaled_.cx < view_.cx ? (view_.cx - scaled_.cx) / 2 : -origin_.x;
  const LONG top = scaled_.cy < view_.cy ? (view_.cy - scaled_.cy) / 2 : -origin_.y;
  return {left, top, left + scaled_.cx, top + scaled_.cy};
}

POINT Zoom::toPicture(POINT point) const {
  const RECT rect = pictureRect();
  return {scaleDown(point.x - rect.left, picture_.cx, scaled_.cx),
          scaleDown(point.y - rect.top, picture_.cy, scaled_.cy)};
}

POINT Zoom::toView(POINT pixel) const {
  const RECT rect = pictureRect();
  return {rect.left + scaleDown(pixel.x, scaled_.cx, picture_.cx),
          rect.top + scaleDown(pixel.y, scaled_.cy, picture_.cy)};
}

}  // namespace zavoview
