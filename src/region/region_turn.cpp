// Quarter turns of run lists. Where two neighbouring rows differ in a column, the turned row made of that column has an
// edge: so the edges of all turned rows are found by comparing each row with the one above it, and the work is in
// proportion to the result.
#include "region/region_turn.h"

#include <algorithm>
#include <utility>

#include "core/memory.h"

namespace zavo {
namespace {

// Calls `visit(start, end)` for the maximal pieces that lie in exactly one of two rows.
template <typename Visit>
void forEachDifference(Segments above, Segments below, Visit visit) {
  const int* a = above.begin();
  const int* b = below.begin();
  int start = 0;
  bool open = false;
  while (a != above.end() || b != below.end()) {
    if (a != above.end() && b != below.end() && *a == *b) {
      ++a;
      ++b;
      continue;
    }
    const bool fromAbove = b == below.end() || (a != above.end() && *a < *b);
    const int x = fromAbove ? *a++ : *b++;
    if (open) visit(start, x);
    start = x;
    open = !open;
  }
}

}  // namespace

int turnRuns(OwnedRegion& turned, const BitmapRegion& region, bool clockwise, ImageSize size) {
  OsBlock<BitmapRegion> object = OsBlock<BitmapRegion>::allocateZeroed(1);
  if (!object) return KERR_NO_MEMORY;
  OwnedRegion made(object.release());

  const RECT bounds = region.bounds;
  if (isEmptyRect(bounds)) {
    turned = std::move(made);
    return KSUCCESS;
  }
  const auto columns = static_cast<unsigned>(bounds.right - bounds.left);
  OsBlock<RegionRow> rows = OsBlock<RegionRow>::allocateZeroed(uint64_t{columns} + 1);
  if (!rows) return KERR_NO_MEMORY;

  // Edges a column: first as changes from one column to the next, then summed up. Column `columns` takes the last
  // changes and stays 0.
  for (int y = bounds.top; y <= bounds.bottom; ++y) {
    forEachDifference(regionRow(region, y - 1), regionRow(region, y), [&](int start, int end) {
      ++rows[static_cast<size_t>(start - bounds.left)].valueCount;
      --rows[static_cast<size_t>(end - bounds.left)].valueCount;
    });
  }
  uint64_t total = 0;
  uint32_t edges = 0;
  for (unsigned column = 0; column < columns; ++column) {
    edges += rows[column].valueCount;
    rows[column].valueCount = edges;
    rows[column].offset = static_cast<uint32_t>(total * sizeof(int));
    total += edges;
  }

  if (total != 0) {
    OsBlock<int> values = OsBlock<int>::allocate(total);
    if (!values) return KERR_NO_MEMORY;
    // Clockwise, the lower rows come to lie left. The offsets serve as cursors and are set back afterwards.
    const auto addEdges = [&](int y, int position) {
      forEachDifference(regionRow(region, y - 1), regionRow(region, y), [&](int start, int end) {
        for (int x = start; x < end; ++x) {
          uint32_t& cursor = rows[static_cast<size_t>(x - bounds.left)].offset;
          values[cursor / sizeof(int)] = position;
          cursor += sizeof(int);
        }
      });
    };
    if (clockwise) {
      for (int y = bounds.bottom; y >= bounds.top; --y) addEdges(y, size.height - y);
    } else {
      for (int y = bounds.top; y <= bounds.bottom; ++y) addEdges(y, y);
    }
    for (unsigned column = 0; column < columns; ++column) {
      rows[column].offset -= rows[column].valueCount * static_cast<uint32_t>(sizeof(int));
    }
    made.get()->values = values.release();
    made.get()->runBytes = static_cast<uint32_t>(total * sizeof(int));
  }

  RECT& turnedBounds = made.get()->bounds;
  if (clockwise) {
    turnedBounds = {size.height - bounds.bottom, bounds.left, size.height - bounds.top, bounds.right};
  } else {
    turnedBounds = {bounds.top, size.width - bounds.right, bounds.bottom, size.width - bounds.left};
    std::reverse(rows.get(), rows.get() + columns);
  }
  (void)rows.resize(columns);
  made.get()->rows = rows.release();
  made.get()->rowIndexBytes = columns * static_cast<uint32_t>(sizeof(RegionRow));
  turned = std::move(made);
  return KSUCCESS;
}

}  // namespace zavo
