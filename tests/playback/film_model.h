// A playback worked out slowly: the state machine as a table of what follows what, the picture as the user sees it,
// pixel by pixel.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <set>
#include <vector>

#include "support/test_bitmap.h"

namespace zavotest {

class FilmModel {
 public:
  explicit FilmModel(BitmapHandle& target);

  // Adds a frame whose rows are still to come, and some of the last frame's rows.
  void append(BitmapHandle& frame);
  void validate(int64_t first, int64_t count);
  // One step; `ticks` is the system's counter.
  void step(uint32_t ticks);
  void cancelWait();
  void seek(int wanted, uint32_t ticks);

  [[nodiscard]] int frameCount() const { return static_cast<int>(frames_.size()); }
  [[nodiscard]] unsigned delay(uint32_t ticks) const;

  unsigned state = PB_PRECLEAR;
  int index = -1;
  Picture seen;
  RECT update = {};  // as seen

 private:
  struct Frame {
    POINT place;
    int rowCount;
    Picture pixels;  // as seen, in the target's form
    Picture drawn;   // 1 for each of them that is
    RECT area;       // bounds of the region, as seen
    unsigned delay;
    unsigned disposal;
    bool waitsForUser;
  };

  void addArea(RECT area, POINT place);
  // Calls visit(x, y, frameX, frameY) for each pixel of the current frame that lies on the target and in its region.
  template <typename Visit>
  void forFramePixels(Visit visit);
  void draw();
  void dispose();
  [[nodiscard]] const Frame& frame() const { return frames_[static_cast<size_t>(index)]; }
  [[nodiscard]] bool rowsAreMissing() const;

  BitmapHandle& target_;
  uint32_t background_;
  Picture region_;  // the target's, as seen
  std::vector<Frame> frames_;
  bool isLoading_ = false;
  std::set<int64_t> rows_;  // of the last frame that are there
  Picture saved_;
  uint32_t delayStart_ = 0;
};

}  // namespace zavotest
