#include "region/region_model.h"

#include <ostream>

namespace zavotest {

void PrintTo(const PointSet& set, std::ostream* out) {
  *out << set.width() << " x " << set.height() << "\n";
  for (int y = 0; y < set.height(); ++y) {
    for (int x = 0; x < set.width(); ++x) *out << (set.has(x, y) ? '#' : '.');
    *out << "\n";
  }
}

PointSet pointsOf(const BitmapHandle& bitmap) {
  PointSet set(bitmap.Width, bitmap.Height);
  unsigned most = 0;
  EXPECT_EQ(Zv_GetBitmapClipSegmentsMax(&bitmap, &most), KSUCCESS);
  std::vector<int> segments(most + 1, -77);
  for (int y = 0; y < bitmap.Height; ++y) {
    unsigned count = 0;
    EXPECT_EQ(Zv_GetBitmapClipSegments(&bitmap, y, segments.data(), &count), KSUCCESS);
    EXPECT_LE(count, most);
    EXPECT_EQ(segments.back(), -77) << "more values than announced";
    for (unsigned i = 0; i + 1 < count; i += 2) {
      for (int x = segments[i]; x < segments[i + 1]; ++x) set.put(x, y);
    }
  }
  return set;
}

testing::AssertionResult isWellFormed(const BitmapHandle& bitmap) {
  const BitmapRegion* const region = bitmap.Region;
  if (region == nullptr) return testing::AssertionSuccess();
  const RECT& bounds = region->bounds;
  const auto fail = [&] {
    return testing::AssertionFailure() << "bounds " << bounds.left << ", " << bounds.top << ", " << bounds.right << ", "
                                       << bounds.bottom << ": ";
  };
  if (bounds.left >= bounds.right || bounds.top >= bounds.bottom) {
    if (!(bounds == RECT{})) return fail() << "an empty region has bounds of zeros";
    if (region->rows != nullptr || region->values != nullptr) return fail() << "an empty region has no arrays";
    if (region->rowIndexBytes != 0 || region->runBytes != 0) return fail() << "sizes of an empty region";
    return testing::AssertionSuccess();
  }
  if (bounds.left < 0 || bounds.top < 0 || bounds.right > bitmap.Width || bounds.bottom > bitmap.Height) {
    return fail() << "outside the bitmap";
  }
  const auto rows = static_cast<unsigned>(bounds.bottom - bounds.top);
  if (region->rowIndexBytes != rows * sizeof(zavo::RegionRow)) return fail() << "index of " << region->rowIndexBytes;
  unsigned values = 0;
  for (unsigned row = 0; row < rows; ++row) {
    const zavo::RegionRow& entry = region->rows[row];
    values += entry.valueCount;
    if (entry.valueCount % 2 != 0) return fail() << "row " << row << " has an odd number of values";
    if (entry.offset % sizeof(int) != 0 || entry.offset + entry.valueCount * sizeof(int) > region->runBytes) {
      return fail() << "row " << row << " lies outside the run data";
    }
    int previous = bounds.left - 1;
    for (unsigned i = 0; i < entry.valueCount; ++i) {
      const int value = region->values[entry.offset / sizeof(int) + i];
      if (value <= previous || value > bounds.right) return fail() << "row " << row << ", value " << i << ": " << value;
      previous = value;
    }
  }
  if (region->runBytes != values * sizeof(int)) return fail() << "run data no row points to";
  return testing::AssertionSuccess();
}

}  // namespace zavotest
