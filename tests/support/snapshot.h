// What a bitmap was at a moment.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace zavotest {

// A region's size: its pixels and its bounds in the stored rows and columns.
struct RegionExtent {
  unsigned area = 0;
  RECT bounds = {};
};
RegionExtent regionExtentOf(const BitmapHandle& bitmap);
bool operator==(const RegionExtent& a, const RegionExtent& b);

// Keeps a bitmap's record, pixels, palette and region's extent as they were when this was constructed.
class Snapshot {
 public:
  explicit Snapshot(BitmapHandle& bitmap);
  // The bitmap is what it was; the row cache alone may differ, because reading moves it.
  [[nodiscard]] testing::AssertionResult unchanged() const;

 private:
  BitmapHandle& bitmap_;
  BitmapHandle record_;
  std::vector<uint8_t> bytes_;
  std::vector<PALETTEENTRY> colors_;
  RegionExtent region_;
};

}  // namespace zavotest
