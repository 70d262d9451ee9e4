// Handing finished pixels to the device, in bands of bounded size.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "core/memory.h"
#include "core/settings.h"
#include "geometry/transpose.h"

namespace zavo {

// What the pixels of all bands are.
struct BandFormat {
  int bits;               // 1, 4, 8 or 24
  const RGBQUAD* colors;  // 1 << bits entries up to 8 bits
  bool adjustColors;      // the colours still have to go through the adjustment table
};

// Collects lines of pixels and paints them band by band, 1:1. Upright, a line is a row of the area, and lines come top
// to bottom. Turned, a line is a column of the area from its lowest pixel upwards, lines come left to right, and every
// band is turned before it is handed over.
class BandPainter {
 public:
  // KSUCCESS or KERR_NO_MEMORY.
  [[nodiscard]] int open(HDC dc, ThreadSettings& settings, const RECT& area, const BandFormat& format, bool turned,
                         DWORD rop);

  // Where the next line goes, packed at the format's depth.
  [[nodiscard]] uint8_t* line();
  // The line before, for a next line that is the same; null when it has been painted already.
  [[nodiscard]] const uint8_t* previousLine() const;
  [[nodiscard]] size_t lineBytes() const { return lineBytes_; }
  // The line is complete.
  void endLine();
  // Paints what has been collected and not painted yet.
  void finish();

 private:
  void choosePalette(ThreadSettings& settings, const BandFormat& format);
  [[nodiscard]] size_t offsetOf(unsigned line) const;
  void paintBand();
  void output(uint8_t* pixels, int x, int y, int width, int height);

  HDC dc_ = nullptr;
  DWORD rop_ = 0;
  RECT area_ = {};
  int bits_ = 0;
  bool turned_ = false;
  const uint8_t* adjust_ = nullptr;  // for 24-bit pixels, null when they stay
  PaintHeader* header_ = nullptr;
  UINT usage_ = DIB_RGB_COLORS;
  unsigned lineBytes_ = 0;
  unsigned linesPerBand_ = 0;
  unsigned lines_ = 0;      // collected
  unsigned linesDone_ = 0;  // painted
  OsBlock<uint8_t> band_;
  OsBlock<uint8_t> turnedBand_;
};

}  // namespace zavo
