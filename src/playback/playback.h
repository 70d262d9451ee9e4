// The playback record: what an application's playback handle stands for.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/bitmap_list.h"

namespace zavo {

struct PlaybackState {
  int32_t index;            // current frame, -1 before the first
  uint32_t state;           // PB_ value
  BitmapHandle* target;     // the application's
  BitmapListHandle frames;  // handed back when the playback ends
  uint32_t delayStart;      // tick count when the current delay began
  RECT updateRect;          // stored target coordinates
  BitmapHandle saved;       // the target area under the current frame, allocated only while needed
  uint32_t validating;      // 1 while the last frame is still arriving
  uint32_t rowsMissing;     // of the last frame
  uint8_t* rowsValid;       // a bit a row, most significant first
};

// The record behind a handle; null for a null handle or one that cannot be locked.
[[nodiscard]] PlaybackState* playbackState(PlaybackHandle playback);

[[nodiscard]] uint32_t frameCount(const PlaybackState& playback);

// The current frame; null when the index names none.
[[nodiscard]] BitmapHandle* currentFrame(const PlaybackState& playback);

// Drops what is known of the rows of a frame that was arriving.
void endValidation(PlaybackState& playback);

// The current frame is the last one and rows of it are still missing.
[[nodiscard]] bool awaitsRows(const PlaybackState& playback);

// Moves the state machine on by at most one step.
void advancePlayback(PlaybackState& playback);

// --- What the steps do to the target

// Fills the target with its background colour.
void clearTarget(PlaybackState& playback);
// Draws the current frame, keeping what is under it when its disposal asks for that.
void drawFrame(PlaybackState& playback, BitmapHandle& frame);
// Does what the current frame's disposal says.
void disposeFrame(PlaybackState& playback, BitmapHandle& frame);
// Forgets what was kept under a frame.
void dropSaved(PlaybackState& playback);

}  // namespace zavo
