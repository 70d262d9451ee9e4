// What a bitmap was at a moment.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace zavotest {

// Keeps a bitmap's record, pixels and palette as they were when this was constructed.
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
};

}  // namespace zavotest
