// Dithering of painted rows to the device's depth: 1, 4 or 8 bits.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/memory.h"
#include "core/settings.h"

namespace zavo {

// Turns rows of blue-green-red bytes into packed palette indexes. Planned once a paint; rows come in order.
class PaintDitherer {
 public:
  // `outputBits` is 1, 4 or 8; `count` the pixels of every row; `x` and `y` where the first row begins, in pixels from
  // the destination's corner, which the ordered pattern is tied to. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int prepare(const ThreadSettings& settings, int outputBits, unsigned count, unsigned x, unsigned y);

  // The next row: `count` pixels in, packed indexes out.
  void run(uint8_t* packed, const uint8_t* bgr);

  // The colours that the indexes stand for, 1 << outputBits of them.
  [[nodiscard]] const RGBQUAD* palette() const { return palette_; }

 private:
  using RowFunction = void (PaintDitherer::*)(uint8_t* packed, const uint8_t* bgr);
  struct Triple {
    int32_t blue, green, red;
  };

  void chooseWorker(bool ordered);
  void buildLevels(const uint8_t adjust[256]);
  template <typename Chooser>
  void runOrdered(uint8_t* packed, const uint8_t* bgr);
  void runOrderedBits(uint8_t* packed, const uint8_t* bgr);
  template <typename Chooser>
  void runDiffused(uint8_t* packed, const uint8_t* bgr);

  RowFunction run_ = nullptr;
  int outputBits_ = 8;
  bool cube_ = false;
  bool clustered_ = false;
  unsigned count_ = 0;
  unsigned x_ = 0;
  unsigned y_ = 0;
  const RGBQUAD* palette_ = nullptr;
  // Output level of a channel value with its dither term, -256 to 511.
  uint8_t levels_[768];
  OsBlock<uint8_t> indexes_;  // an index a pixel, or the levels of a row for single bits
  OsBlock<Triple> errors_;    // sums for the next row, in sixteenths
};

}  // namespace zavo
