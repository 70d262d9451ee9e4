// The state machine: each call takes at most one step.
#include "playback/playback.h"

namespace zavo {
namespace {

void beginFrame(PlaybackState& playback) {
  ++playback.index;
  playback.state = currentFrame(playback) != nullptr ? PB_RENDER : PB_END;
}

void render(PlaybackState& playback) {
  if (awaitsRows(playback)) {
    playback.state = PB_WAITLINES;
    return;
  }
  BitmapHandle* frame = currentFrame(playback);
  if (frame == nullptr) {
    // An animation that is still empty begins again, and must not step past the frame that is appended next.
    playback.state = PB_END;
    return;
  }
  drawFrame(playback, *frame);
  playback.state = PB_POSTRENDER;
}

void beginWait(PlaybackState& playback) {
  const BitmapHandle* frame = currentFrame(playback);
  const bool waitsForUser = frame != nullptr && (frame->Flags & BMF_PLAYBACK_WAITUSER) != 0;
  if (frame != nullptr && frame->PlaybackDelay != 0) {
    playback.delayStart = GetTickCount();
    playback.state = waitsForUser ? PB_WAITINPUTDELAY : PB_WAITDELAY;
  } else {
    playback.state = waitsForUser ? PB_WAITINPUT : PB_DISPOSE;
  }
}

// The unsigned difference is right across the tick counter's wrap.
void waitDelay(PlaybackState& playback) {
  const BitmapHandle* frame = currentFrame(playback);
  if (frame == nullptr || GetTickCount() - playback.delayStart >= frame->PlaybackDelay) playback.state = PB_DISPOSE;
}

void dispose(PlaybackState& playback) {
  if (BitmapHandle* frame = currentFrame(playback)) disposeFrame(playback, *frame);
  playback.state = PB_NEXT;
}

}  // namespace

void advancePlayback(PlaybackState& playback) {
  switch (playback.state) {
    case PB_PRECLEAR:
      clearTarget(playback);
      playback.state = PB_POSTCLEAR;
      return;
    case PB_POSTCLEAR:
    case PB_NEXT:
      beginFrame(playback);
      return;
    case PB_RENDER:
    case PB_WAITLINES:
      render(playback);
      return;
    case PB_POSTRENDER:
      beginWait(playback);
      return;
    case PB_WAITDELAY:
    case PB_WAITINPUTDELAY:
      waitDelay(playback);
      return;
    case PB_DISPOSE:
      dispose(playback);
      return;
    case PB_END:  // the animation loops; the target is not cleared again
      playback.index = 0;
      playback.state = PB_RENDER;
      return;
    default:  // PB_WAITINPUT: only a cancel goes on
      return;
  }
}

}  // namespace zavo
