// Dithering of painted rows to the device's depth: 1, 4 or 8 bits.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/threshold.h"
#include "core/memory.h"
#include "core/settings.h"

namespace zavo {

// Where the lines of a paint lie, in pixels from the destination's top left corner, which the ordered pattern is tied
// to: so a picture looks the same whichever way it is stored and whichever part of it is painted.
struct DitherPlace {
  unsigned x;   // of the first line's first pixel
  unsigned y;   // likewise
  bool turned;  // lines go upwards and follow each other to the right; else to the right and downwards
};

// Turns lines of blue-green-red bytes into packed palette indexes. Planned once a paint; lines come in order.
class PaintDitherer {
 public:
  // `outputBits` is 1, 4 or 8; `count` the pixels of every line. KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int prepare(const ThreadSettings& settings, int outputBits, unsigned count, const DitherPlace& place);

  // The next line: `count` pixels in, packed indexes out.
  void run(uint8_t* packed, const uint8_t* bgr);

  // The colours that the indexes stand for, 1 << outputBits of them.
  [[nodiscard]] const RGBQUAD* palette() const { return palette_; }

 private:
  using RowFunction = void (PaintDitherer::*)(uint8_t* packed, const uint8_t* bgr);
  using IndexFunction = unsigned (*)(unsigned blue, unsigned green, unsigned red);
  struct Triple {
    int32_t blue, green, red;
  };
  // What a channel value leads to: its error, and its part of the index, which is the sum of the channels' parts.
  struct Step {
    int16_t error;
    uint8_t part;
  };
  static constexpr unsigned levelCount = 768;  // channel values with a dither term or an error, from -256 on

  void chooseWorker(bool ordered);
  void buildLevels(const uint8_t adjust[256]);
  // The current line's threshold for its pixel k, repeated every 8.
  [[nodiscard]] unsigned threshold(const ThresholdMatrix& matrix, unsigned k) const {
    return place_.turned ? matrix[(place_.y - k) & 7][place_.x & 7] : matrix[place_.y & 7][(place_.x + k) & 7];
  }
  [[nodiscard]] bool buildSteps(IndexFunction index);
  template <typename Target>
  void runOrdered(uint8_t* packed, const uint8_t* bgr);
  void runOrderedBits(uint8_t* packed, const uint8_t* bgr);
  void runDiffused(uint8_t* packed, const uint8_t* bgr);
  void runDiffusedBits(uint8_t* packed, const uint8_t* bgr);

  RowFunction run_ = nullptr;
  int outputBits_ = 8;
  bool cube_ = false;
  bool clustered_ = false;
  unsigned count_ = 0;
  DitherPlace place_ = {};  // of the current line
  const RGBQUAD* palette_ = nullptr;
  uint8_t levels_[levelCount];  // adjusted
  OsBlock<uint8_t> indexes_;    // an index a pixel, or the levels of a row for single bits
  OsBlock<Step> steps_;         // levelCount for blue, green and red each
  OsBlock<Triple> errors_;      // sums for the next row, in sixteenths, one pixel further on
};

}  // namespace zavo
