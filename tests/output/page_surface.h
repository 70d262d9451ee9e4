// A page in memory that a device context draws on, of any size in pixels.
#pragma once

#include <zavo.h>

#include "support/import_patch.h"
#include "support/test_bitmap.h"

namespace zavotest {

// What the library is told of a device.
struct PageDevice {
  int width = 400;
  int height = 300;
  int bits = 32;
  int colors = -1;  // NUMCOLORS: -1 for more than 256
  int technology = DT_RASPRINTER;
};

// White at first. While this lives the library's GetDeviceCaps is answered for this device context as `device` says.
class PageSurface {
 public:
  explicit PageSurface(const PageDevice& device);
  PageSurface(const PageSurface&) = delete;
  PageSurface& operator=(const PageSurface&) = delete;
  ~PageSurface();

  [[nodiscard]] HDC dc() const { return dc_; }
  [[nodiscard]] Picture picture() const;
  // The smallest rectangle that holds all that is not white; empty for a blank page.
  [[nodiscard]] RECT drawn() const;
  void clear();

 private:
  PageDevice device_;
  HDC dc_;
  HBITMAP bitmap_;
  HGDIOBJ displaced_;
  uint32_t* pixels_ = nullptr;
  Replacement<"GetDeviceCaps", decltype(&GetDeviceCaps)> caps_;
};

// The smallest rectangle of a picture that holds all that is not white.
RECT drawnPart(const Picture& picture);

}  // namespace zavotest
