// Frames that are appended while they are still being loaded: their rows are marked as they arrive.
#include <algorithm>
#include <cstdint>

#include "core/memory.h"
#include "core/status.h"
#include "playback/playback.h"

namespace zavo {
namespace {

// The rows of the array are those of the last frame.
BitmapHandle* lastFrame(const PlaybackState& playback) {
  const BitmapList* frames = bitmapList(playback.frames);
  return frames != nullptr && frames->count != 0 ? &frames->items[frames->count - 1] : nullptr;
}

void markRow(PlaybackState& playback, int64_t row) {
  uint8_t& byte = playback.rowsValid[row / 8];
  const auto bit = static_cast<uint8_t>(0x80 >> row % 8);
  if ((byte & bit) != 0) return;
  byte = static_cast<uint8_t>(byte | bit);
  --playback.rowsMissing;
}

}  // namespace

void endValidation(PlaybackState& playback) {
  Zv_OsFree(playback.rowsValid);
  playback.rowsValid = nullptr;
  playback.rowsMissing = 0;
  playback.validating = 0;
}

bool awaitsRows(const PlaybackState& playback) {
  return playback.validating != 0 && static_cast<uint32_t>(playback.index) + 1 == frameCount(playback);
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_AppendPlayback(PlaybackHandle playback, BitmapHandle* frame) {
  PlaybackState* record = playbackState(playback);
  if (record == nullptr || frame == nullptr) return KERR_BAD_PARAMETER;
  endValidation(*record);
  auto rowsValid = OsBlock<uint8_t>::allocateZeroed(frame->Height > 0 ? static_cast<unsigned>(frame->Height) : 0);
  if (!rowsValid) return KERR_NO_MEMORY;
  if (const int status = Zv_InsertBitmapListItem(record->frames, frameCount(*record), frame); status != KSUCCESS) {
    return status;
  }
  // The application may go on loading through its own record; the list's has no lock of its own.
  Zv_ReleaseBitmap(lastFrame(*record));
  record->rowsValid = rowsValid.release();
  record->rowsMissing = frame->Height > 0 ? static_cast<uint32_t>(frame->Height) : 0;
  record->validating = record->rowsMissing != 0 ? 1 : 0;
  if (record->state == PB_END) record->state = PB_RENDER;
  return KSUCCESS;
}

int ZAVO_CALL Zv_ValidatePlaybackLines(PlaybackHandle playback, int firstRow, int rowCount) {
  PlaybackState* record = playbackState(playback);
  if (record == nullptr) return KERR_BAD_PARAMETER;
  const BitmapHandle* frame = lastFrame(*record);
  if (record->validating == 0 || frame == nullptr) return KSUCCESS;
  // The application may have put a taller frame into its list since: the array has a byte a row.
  const int64_t rowsKnown = GlobalSize(GlobalHandle(record->rowsValid));
  const int64_t end = std::min({int64_t{firstRow} + rowCount, int64_t{frame->Height}, rowsKnown});
  for (int64_t row = std::max(firstRow, 0); row < end && record->rowsMissing != 0; ++row) markRow(*record, row);
  if (record->rowsMissing == 0) endValidation(*record);
  return KSUCCESS;
}
