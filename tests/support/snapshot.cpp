#include "support/snapshot.h"

#include <algorithm>
#include <cstring>

#include "support/test_bitmap.h"

namespace zavotest {

RegionExtent regionExtentOf(const BitmapHandle& bitmap) {
  RegionExtent extent;
  if (Zv_BitmapHasRgn(&bitmap) == 0) return extent;
  Zv_GetBitmapRgnArea(&bitmap, &extent.area);
  Zv_GetBitmapRgnBounds(&bitmap, nullptr, &extent.bounds);
  return extent;
}

bool operator==(const RegionExtent& a, const RegionExtent& b) {
  return a.area == b.area && EqualRect(&a.bounds, &b.bounds);
}

Snapshot::Snapshot(BitmapHandle& bitmap)
    : bitmap_(bitmap),
      record_(bitmap),
      bytes_(bytesOf(bitmap)),
      colors_(colorsOf(bitmap)),
      region_(regionExtentOf(bitmap)) {}

testing::AssertionResult Snapshot::unchanged() const {
  BitmapHandle now = bitmap_;
  now.CachedRow = record_.CachedRow;
  now.CachedRowOffset = record_.CachedRowOffset;
  const auto words = [](const BitmapHandle& record) { return reinterpret_cast<const uint32_t*>(&record); };
  for (size_t i = 0; i < sizeof now / sizeof(uint32_t); ++i) {
    if (words(now)[i] != words(record_)[i]) return testing::AssertionFailure() << "word " << i << " of the record";
  }
  const std::vector<uint8_t> bytes = bytesOf(bitmap_);
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == bytes_[i]) continue;
    return testing::AssertionFailure() << "byte " << i % now.BytesPerLine << " of row " << i / now.BytesPerLine;
  }
  const auto same = [](const PALETTEENTRY& a, const PALETTEENTRY& b) { return memcmp(&a, &b, sizeof a) == 0; };
  const std::vector<PALETTEENTRY> colors = colorsOf(bitmap_);
  if (!std::equal(colors.begin(), colors.end(), colors_.begin(), colors_.end(), same)) {
    return testing::AssertionFailure() << "the palette";
  }
  if (!(regionExtentOf(bitmap_) == region_)) return testing::AssertionFailure() << "the region";
  return testing::AssertionSuccess();
}

}  // namespace zavotest
