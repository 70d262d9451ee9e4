// The playback handle and the exports that look after the record behind it.
#include "playback/playback.h"

#include "core/memory.h"
#include "core/status.h"

namespace zavo {
namespace {

bool waits(uint32_t state) {
  return state == PB_WAITINPUT || state == PB_WAITDELAY || state == PB_WAITINPUTDELAY;
}

void cancelWait(PlaybackState& playback) {
  if (waits(playback.state)) playback.state = PB_DISPOSE;
}

// Starts from a cleared target when the frame wanted has gone by, then draws and disposes without waiting.
void seek(PlaybackState& playback, int32_t index) {
  endValidation(playback);
  if (playback.index > index) {
    dropSaved(playback);
    playback.state = PB_PRECLEAR;
    playback.index = -1;
  }
  while (playback.index < index) {
    advancePlayback(playback);
    cancelWait(playback);
  }
}

}  // namespace

// The block behind a record stays locked from its allocation, so that its address holds after unlocking.
PlaybackState* playbackState(PlaybackHandle playback) {
  if (playback == nullptr) return nullptr;
  auto* state = static_cast<PlaybackState*>(GlobalLock(playback));
  if (state != nullptr) GlobalUnlock(playback);
  return state;
}

uint32_t frameCount(const PlaybackState& playback) {
  const BitmapList* frames = bitmapList(playback.frames);
  return frames != nullptr ? frames->count : 0;
}

BitmapHandle* currentFrame(const PlaybackState& playback) {
  const BitmapList* frames = bitmapList(playback.frames);
  if (frames == nullptr || static_cast<uint32_t>(playback.index) >= frames->count) return nullptr;
  return &frames->items[playback.index];
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CreatePlayback(PlaybackHandle* playback, BitmapHandle* target, BitmapListHandle frames) {
  if (playback == nullptr) return KERR_BAD_PARAMETER;
  *playback = nullptr;
  if (!isAllocated(target)) return KERR_BAD_PARAMETER;
  auto state = OsBlock<PlaybackState>::allocateZeroed(1);
  if (!state) return KERR_NO_MEMORY;
  if (frames == nullptr) {
    if (const int status = Zv_CreateBitmapList(&frames); status != KSUCCESS) return status;
  }
  state->index = -1;
  state->state = PB_PRECLEAR;
  state->target = target;
  state->frames = frames;
  *playback = GlobalHandle(state.release());
  return KSUCCESS;
}

int ZAVO_CALL Zv_DestroyPlayback(PlaybackHandle playback, BitmapListHandle* frames) {
  PlaybackState* state = playbackState(playback);
  if (state == nullptr) return KERR_BAD_PARAMETER;
  dropSaved(*state);
  endValidation(*state);
  if (frames != nullptr) *frames = state->frames;
  Zv_OsFree(state);
  return KSUCCESS;
}

int ZAVO_CALL Zv_ProcessPlayback(PlaybackHandle playback, unsigned* state) {
  PlaybackState* record = playbackState(playback);
  if (record == nullptr) return KERR_BAD_PARAMETER;
  advancePlayback(*record);
  if (state != nullptr) *state = record->state;
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetPlaybackState(PlaybackHandle playback, unsigned* state) {
  const PlaybackState* record = playbackState(playback);
  if (record == nullptr || state == nullptr) return KERR_BAD_PARAMETER;
  *state = record->state;
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetPlaybackIndex(PlaybackHandle playback, int* index) {
  const PlaybackState* record = playbackState(playback);
  if (record == nullptr || index == nullptr) return KERR_BAD_PARAMETER;
  *index = record->index;
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetPlaybackDelay(PlaybackHandle playback, unsigned* milliseconds) {
  const PlaybackState* record = playbackState(playback);
  if (record == nullptr || milliseconds == nullptr) return KERR_BAD_PARAMETER;
  *milliseconds = 0;
  const BitmapHandle* frame = currentFrame(*record);
  if (frame == nullptr || (record->state != PB_WAITDELAY && record->state != PB_WAITINPUTDELAY)) return KSUCCESS;
  const uint32_t elapsed = GetTickCount() - record->delayStart;  // right across the counter's wrap
  if (elapsed < frame->PlaybackDelay) *milliseconds = frame->PlaybackDelay - elapsed;
  return KSUCCESS;
}

int ZAVO_CALL Zv_CancelPlaybackWait(PlaybackHandle playback) {
  PlaybackState* record = playbackState(playback);
  if (record == nullptr) return KERR_BAD_PARAMETER;
  cancelWait(*record);
  return KSUCCESS;
}

int ZAVO_CALL Zv_GetPlaybackUpdateRect(PlaybackHandle playback, RECT* rect, int clear) {
  PlaybackState* record = playbackState(playback);
  if (record == nullptr) return KERR_BAD_PARAMETER;
  if (rect != nullptr) *rect = record->updateRect;
  if (clear != 0) record->updateRect = {};
  return KSUCCESS;
}

int ZAVO_CALL Zv_ClearPlaybackUpdateRect(PlaybackHandle playback) {
  return Zv_GetPlaybackUpdateRect(playback, nullptr, 1);
}

int ZAVO_CALL Zv_SetPlaybackIndex(PlaybackHandle playback, int index) {
  PlaybackState* record = playbackState(playback);
  if (record == nullptr || index < -1 || (index >= 0 && static_cast<uint32_t>(index) > frameCount(*record))) {
    return KERR_BAD_PARAMETER;
  }
  seek(*record, index);
  return KSUCCESS;
}
