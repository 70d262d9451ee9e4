// The run builder. A row is written straight behind the values stored before it: room for the longest possible row is
// always there.
#include "region/region_builder.h"

#include <algorithm>
#include <cstring>

namespace zavo {
namespace {

// The run data grows in steps of whole longest rows of about so many bytes.
constexpr uint64_t stepBytes = 16384;

}  // namespace

int RegionBuilder::start(const RECT& area) {
  area_ = area;
  bounds_ = {};
  anyRuns_ = false;
  used_ = 0;
  count_ = 0;
  lastOffset_ = 0;
  lastCount_ = 0;

  const int64_t rows = std::max<int64_t>(int64_t{area.bottom} - area.top, 0);
  const int64_t columns = std::max<int64_t>(int64_t{area.right} - area.left, 0);
  rowLimit_ = static_cast<uint64_t>((columns + 1) / 2 * 2);
  const uint64_t rowLimitBytes = rowLimit_ * sizeof(int);
  step_ = rowLimit_ == 0 ? 0 : std::max<uint64_t>(stepBytes / rowLimitBytes, 1) * rowLimit_;
  capacity_ = step_;

  rows_ = OsBlock<RegionRow>::allocateZeroed(static_cast<uint64_t>(rows));
  values_ = OsBlock<int>::allocate(capacity_);
  if (!rows_ || !values_) return KERR_NO_MEMORY;
  row_ = values_.get();
  return KSUCCESS;
}

int RegionBuilder::claimRow() {
  used_ += count_;
  count_ = 0;
  if (used_ + rowLimit_ > capacity_) {
    // A region that has grown large grows by half, so that the copying stays in proportion to its size.
    const uint64_t capacity = used_ + std::max({step_, rowLimit_, used_ / 2});
    if (!values_.resize(capacity)) return KERR_NO_MEMORY;
    capacity_ = capacity;
  }
  row_ = values_.get() + used_;
  return KSUCCESS;
}

int RegionBuilder::endRow(int y) {
  lastOffset_ = used_;
  lastCount_ = count_;
  if (count_ == 0) return KSUCCESS;

  if (!anyRuns_) {
    bounds_ = {row_[0], y, row_[count_ - 1], y + 1};
    anyRuns_ = true;
  } else {
    bounds_.left = std::min<LONG>(bounds_.left, row_[0]);
    bounds_.right = std::max<LONG>(bounds_.right, row_[count_ - 1]);
    bounds_.bottom = y + 1;
  }
  rows_[static_cast<size_t>(y - area_.top)] = {count_, static_cast<uint32_t>(used_ * sizeof(int))};
  return claimRow();
}

int RegionBuilder::repeatRow(int y) {
  memcpy(row_, values_.get() + lastOffset_, lastCount_ * sizeof(int));
  count_ = lastCount_;
  return endRow(y);
}

int RegionBuilder::finish(OwnedRegion& region, Bounds bounds) {
  OsBlock<BitmapRegion> object = OsBlock<BitmapRegion>::allocateZeroed(1);
  if (!object) return KERR_NO_MEMORY;

  const RECT kept = bounds == Bounds::asStarted ? area_ : bounds_;
  if (!isEmptyRect(kept)) {
    const auto count = static_cast<size_t>(kept.bottom - kept.top);
    memmove(rows_.get(), rows_.get() + (kept.top - area_.top), count * sizeof(RegionRow));
    // What could not be shrunk stays as large as it is.
    (void)rows_.resize(count);
    if (used_ != 0) (void)values_.resize(used_);
    object->bounds = kept;
    object->rowIndexBytes = static_cast<uint32_t>(count * sizeof(RegionRow));
    object->rows = rows_.release();
    object->runBytes = static_cast<uint32_t>(used_ * sizeof(int));
    if (used_ != 0) object->values = values_.release();
  }
  rows_.reset();
  values_.reset();
  region.reset(object.release());
  return KSUCCESS;
}

}  // namespace zavo
