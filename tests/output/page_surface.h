// A page in memory that a device context draws on, of any size in pixels.
#pragma once

#include "support/canvas.h"

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
class PageSurface : public Canvas {
 public:
  explicit PageSurface(const PageDevice& device)
      : Canvas(device.width, device.height, 0xFFFFFF),
        caps_({{HORZRES, device.width},
               {VERTRES, device.height},
               {BITSPIXEL, device.bits},
               {PLANES, 1},
               {NUMCOLORS, device.colors},
               {TECHNOLOGY, device.technology}},
              dc()) {}

  // The smallest rectangle that holds all that is not white; empty for a blank page.
  [[nodiscard]] RECT drawn() const {
    const Picture page = picture();
    RECT part = {};
    for (LONG y = 0; y < page.height; ++y) {
      for (LONG x = 0; x < page.width; ++x) {
        const RECT pixel = {x, y, x + 1, y + 1};
        if (page.at(x, y) != 0xFFFFFF) UnionRect(&part, &part, &pixel);
      }
    }
    return part;
  }

 private:
  FakeDevice caps_;
};

}  // namespace zavotest
