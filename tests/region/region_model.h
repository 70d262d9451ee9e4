// A region as a plain set of pixels, and what every region object must look like.
#pragma once

#include <zavo.h>

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "region/region.h"
#include "support/test_bitmap.h"

namespace zavotest {

struct RegionBitmap : TestBitmap {
  RegionBitmap(int width, int height, int perspective = VIEW_UPRIGHT, int bits = 1) : TestBitmap(width, height, bits) {
    ViewPerspective = perspective;
  }
};

// Pixels of a width x height area; nothing outside of it.
class PointSet {
 public:
  PointSet(int width, int height) : width_(width), height_(height) {
    points_.resize(static_cast<size_t>(std::max(width, 0)) * static_cast<size_t>(std::max(height, 0)));
  }
  [[nodiscard]] int width() const { return width_; }
  [[nodiscard]] int height() const { return height_; }
  [[nodiscard]] bool has(int x, int y) const { return inside(x, y) && points_[at(x, y)]; }
  void put(int x, int y, bool in = true) {
    if (inside(x, y)) points_[at(x, y)] = in;
  }
  void putRect(const RECT& rect) {
    for (int y = std::max<int>(rect.top, 0); y < std::min<int>(rect.bottom, height_); ++y) {
      for (int x = std::max<int>(rect.left, 0); x < std::min<int>(rect.right, width_); ++x) put(x, y);
    }
  }
  template <typename Test>
  void fill(Test in) {
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) put(x, y, in(x, y));
    }
  }
  [[nodiscard]] unsigned count() const { return static_cast<unsigned>(std::ranges::count(points_, true)); }
  [[nodiscard]] bool empty() const { return count() == 0; }
  // Of the pixels; zeros when there are none.
  [[nodiscard]] RECT bounds() const {
    RECT box = {width_, height_, 0, 0};
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) {
        if (!has(x, y)) continue;
        box = {std::min<LONG>(box.left, x), std::min<LONG>(box.top, y), std::max<LONG>(box.right, x + 1),
               std::max<LONG>(box.bottom, y + 1)};
      }
    }
    return empty() ? RECT{} : box;
  }
  bool operator==(const PointSet&) const = default;

 private:
  [[nodiscard]] bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }
  [[nodiscard]] size_t at(int x, int y) const {
    return static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x);
  }

  int width_;
  int height_;
  std::vector<bool> points_;
};

// A set as a picture, for failure messages.
void PrintTo(const PointSet& set, std::ostream* out);

// The pixels of a bitmap's region, by its clip segments.
[[nodiscard]] PointSet pointsOf(const BitmapHandle& bitmap);

// The region object keeps its invariants, lies in the bitmap, and has no pixels outside `bitmap`.
[[nodiscard]] testing::AssertionResult isWellFormed(const BitmapHandle& bitmap);

}  // namespace zavotest

// In the namespace of RECT, where the comparing macros look.
inline void PrintTo(const RECT& rect, std::ostream* out) {
  *out << "(" << rect.left << ", " << rect.top << ", " << rect.right << ", " << rect.bottom << ")";
}
inline bool operator==(const RECT& a, const RECT& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}
