// The combine modes.
#include "region/combine_shape.h"

#include <utility>

#include "region/run_operations.h"

namespace zavo {
namespace {

// The operation of existing region (first) and new shape (second).
RunOperation operationOf(int combineMode) {
  switch (combineMode) {
    case CombineAnd:
      return RunOperation::both;
    case CombineAndNotBitmap:
      return RunOperation::secondNotFirst;
    case CombineOr:
      return RunOperation::either;
    case CombineXor:
      return RunOperation::exactlyOne;
    default:
      return RunOperation::firstNotSecond;  // CombineAndNotRegion, and CombineSetNot on the whole bitmap
  }
}

}  // namespace

int combineShape(BitmapHandle& bitmap, OwnedRegion shape, int combineMode) {
  // An empty shape comes before the check of the mode, and leaves the region alone even where the mode would set it.
  if (!shape) return KSUCCESS;
  if (combineMode < CombineAnd || combineMode > CombineSetNot) return KERR_BAD_PARAMETER;
  if (combineMode == CombineSet) {
    attachRegion(bitmap, std::move(shape));
    return KSUCCESS;
  }

  OwnedRegion whole;
  const BitmapRegion* existing = combineMode == CombineSetNot ? nullptr : bitmap.Region;
  if (existing == nullptr) {
    if (const int status = makeRectRegion(whole, bitmapRect(bitmap)); status != KSUCCESS) return status;
    existing = whole.get();
  }
  OwnedRegion result;
  const int status = combineRuns(result, existing, shape.get(), operationOf(combineMode), bitmapRect(bitmap));
  if (status == KSUCCESS) attachRegion(bitmap, std::move(result));
  return status;
}

}  // namespace zavo
