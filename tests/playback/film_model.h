// A playback worked out slowly: the state machine as a table of what follows what, the picture as the user sees it,
// pixel by pixel.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "support/test_bitmap.h"

namespace zavotest {

// The stored pixel that shows at (x, y) of the picture a user sees.
POINT storedPixel(const BitmapHandle& bitmap, int x, int y);
SIZE seenSize(const BitmapHandle& bitmap);
// The pixels as seen, each its bits in storage order.
Picture seenPicture(BitmapHandle& bitmap);
// A stored rectangle as seen.
RECT seenRect(const BitmapHandle& bitmap, const RECT& stored);

struct FrameModel {
  POINT place;
  Picture pixels;           // as seen, in the target's form
  std::vector<bool> drawn;  // of each of them
  RECT area;                // bounds of the region, as seen
  unsigned delay;
  unsigned disposal;
  bool waitsForUser;
};

// Reads a frame as it is to be drawn on the target.
FrameModel modelOf(BitmapHandle& frame, BitmapHandle& target);

class FilmModel {
 public:
  explicit FilmModel(BitmapHandle& target);

  void add(const FrameModel& frame) { frames_.push_back(frame); }
  // One step; `ticks` is the system's counter.
  void step(uint32_t ticks);
  void cancelWait();

  unsigned state = PB_PRECLEAR;
  int index = -1;
  Picture seen;
  RECT update = {};  // as seen

 private:
  void next();
  void draw();
  void dispose();
  // Calls visit(x, y, frameX, frameY) for each pixel of the current frame that lies on the target and in its region.
  template <typename Visit>
  void forFramePixels(Visit visit);
  void addArea(RECT area, POINT place);
  const FrameModel& frame() const { return frames_[static_cast<size_t>(index)]; }
  bool inRegion(int x, int y) const { return region_[static_cast<size_t>(y * seen.width + x)]; }

  std::vector<FrameModel> frames_;
  std::vector<bool> region_;  // the target's, as seen
  RECT targetArea_;
  POINT targetPlace_;
  uint32_t background_;
  std::optional<Picture> saved_;
  uint32_t delayStart_ = 0;
};

}  // namespace zavotest
