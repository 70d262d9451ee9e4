// Set operations on regions: the edges of two sorted rows are walked in order of x, and the truth table of the
// operation says between which of them the result is covered.
#include "region/run_operations.h"

#include <algorithm>

#include "region/region_builder.h"

namespace zavo {
namespace {

// Walks the edges of one row, clamped to the columns of interest.
class EdgeWalk {
 public:
  EdgeWalk(Segments row, int left, int right) : next_(row.begin()), end_(row.end()), left_(left), right_(right) {
    // Runs that end before the first column change nothing.
    while (next_ != end_ && next_[1] <= left) next_ += 2;
  }

  // Position of the next edge; `right` when there is none.
  [[nodiscard]] int position() const { return next_ == end_ ? right_ : std::clamp(*next_, left_, right_); }
  [[nodiscard]] unsigned inside() const { return inside_; }

  // Passes every edge at `x`.
  void pass(int x) {
    while (next_ != end_ && std::clamp(*next_, left_, right_) == x) {
      ++next_;
      inside_ ^= 1;
    }
  }

 private:
  const int* next_;
  const int* end_;
  int left_;
  int right_;
  unsigned inside_ = 0;
};

void combineRow(RegionBuilder& builder, Segments first, Segments second, unsigned truth, int left, int right) {
  EdgeWalk a(first, left, right);
  EdgeWalk b(second, left, right);
  int start = left;
  bool covered = false;
  for (;;) {
    const int x = std::min(a.position(), b.position());
    if (x >= right) break;
    a.pass(x);
    b.pass(x);
    const bool coveredNow = (truth >> (2 * a.inside() + b.inside()) & 1) != 0;
    if (coveredNow == covered) continue;
    if (covered) builder.addRun(start, x);
    start = x;
    covered = coveredNow;
  }
  if (covered) builder.addRun(start, right);
}

// Where the result can have pixels: within `first`, `second`, both or either, by the operation.
RECT reach(const RECT& first, const RECT& second, RunOperation operation) {
  switch (operation) {
    case RunOperation::both:
      return intersection(first, second);
    case RunOperation::first:
    case RunOperation::firstNotSecond:
      return first;
    case RunOperation::secondNotFirst:
      return second;
    default:
      break;
  }
  if (isEmptyRect(first)) return second;
  if (isEmptyRect(second)) return first;
  return {std::min(first.left, second.left), std::min(first.top, second.top), std::max(first.right, second.right),
          std::max(first.bottom, second.bottom)};
}

}  // namespace

int combineRuns(OwnedRegion& result, const BitmapRegion* first, const BitmapRegion* second, RunOperation operation,
                const RECT& clip) {
  static constexpr BitmapRegion none = {};
  const BitmapRegion& a = first != nullptr ? *first : none;
  const BitmapRegion& b = second != nullptr ? *second : none;
  const auto truth = static_cast<unsigned>(operation);

  const RECT area = intersection(reach(a.bounds, b.bounds, operation), clip);
  RegionBuilder builder;
  if (const int status = builder.start(area); status != KSUCCESS) return status;
  for (int y = area.top; y < area.bottom; ++y) {
    combineRow(builder, regionRow(a, y), regionRow(b, y), truth, area.left, area.right);
    if (const int status = builder.endRow(y); status != KSUCCESS) return status;
  }
  return builder.finish(result);
}

}  // namespace zavo
