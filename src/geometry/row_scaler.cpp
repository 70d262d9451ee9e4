// Scaling rows one at a time while a caller streams them.
#include <zavo.h>

#include "core/memory.h"
#include "core/status.h"
#include "geometry/row_stretch.h"

namespace zavo {
namespace {

static_assert(sizeof(ResizeState) == 14 * 4, "the state is 14 words");

constexpr int noRowYet = -1;

// The vertical accumulator before row `row` when rows come in order from the first.
int accumulatorBefore(const ResizeState& state, int row) {
  const auto value = static_cast<int>(int64_t{state.VerticalRemainder} * row % state.OldHeight);
  return value < 0 ? value + state.OldHeight : value;
}

// How often a row is to be written. Rows in decreasing order get what increasing order gives the row before: that
// shift by one is part of the design, and so is that the first row handled counts as row 0 whatever its number.
int copyCount(ResizeState& state, int row) {
  const int64_t moved = int64_t{row} - state.LastRow;
  int64_t accumulator = state.VerticalAccumulator;
  int count = state.VerticalQuotient;
  if (moved == -1 && state.LastRow != noRowYet) {
    if (state.Decreasing == 0) accumulator = accumulatorBefore(state, row);
    state.Decreasing = 1;
    accumulator -= state.VerticalRemainder;
    if (accumulator < 0) {
      accumulator += state.OldHeight;
      ++count;
    }
  } else {
    const bool follows = moved == 1 || state.LastRow == noRowYet;
    if (!follows || state.Decreasing != 0) accumulator = accumulatorBefore(state, row);
    state.Decreasing = 0;
    accumulator += state.VerticalRemainder;
    if (accumulator >= state.OldHeight) {
      accumulator -= state.OldHeight;
      ++count;
    }
  }
  state.VerticalAccumulator = static_cast<int>(accumulator);
  state.LastRow = row;
  return count;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_StartResize(int oldWidth, int oldHeight, int newWidth, int newHeight, ResizeState** state) {
  if (state == nullptr || oldWidth < 1 || oldHeight < 1 || newWidth < 1 || newHeight < 1) return KERR_BAD_PARAMETER;
  auto made = OsBlock<ResizeState>::allocateZeroed(1);
  if (!made) return KERR_NO_MEMORY;
  made->LastRow = noRowYet;
  made->OldWidth = oldWidth;
  made->OldHeight = oldHeight;
  made->NewWidth = newWidth;
  made->NewHeight = newHeight;
  made->HorizontalQuotient = oldWidth / newWidth;
  made->HorizontalRemainder = oldWidth % newWidth;
  made->VerticalQuotient = newHeight / oldHeight;
  made->VerticalRemainder = newHeight % oldHeight;
  *state = made.release();
  return KSUCCESS;
}

int ZAVO_CALL Zv_Resize(unsigned char* buffer, int row, int bitsPerPixel, int* newWidth, int* copies,
                        ResizeState* state) {
  if (buffer == nullptr || state == nullptr) return KERR_BAD_PARAMETER;
  if (!isSupportedDepth(bitsPerPixel)) return KERR_BAD_BPP;
  const bool sameSize = state->OldWidth == state->NewWidth && state->OldHeight == state->NewHeight;
  const int count = sameSize ? 1 : copyCount(*state, row);
  if (newWidth != nullptr) *newWidth = state->NewWidth;
  if (copies != nullptr) *copies = count;
  if (count != 0) {
    stretchInPlace(buffer, static_cast<unsigned>(state->NewWidth), static_cast<unsigned>(state->OldWidth),
                   bitsPerPixel);
  }
  return count;
}

int ZAVO_CALL Zv_StopResize(ResizeState* state) {
  Zv_OsFree(state);
  return KSUCCESS;
}
