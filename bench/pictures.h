// Pictures to work on, and the peers' ways to hold them.
#pragma once

#include <zavo.h>

#include <string>
#include <vector>

#include "bench.h"

namespace bench {

// A bitmap that is freed at the end.
struct Bitmap : BitmapHandle {
  Bitmap() : BitmapHandle{} {}
  // Blue first, upright, with the fixed palette; pixels are zero. Ends the program when there is no memory.
  Bitmap(Size size, int bits);
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  ~Bitmap() { Zv_FreeBitmap(this); }

  [[nodiscard]] unsigned char* row(int y) const { return Data + size_t(y) * BytesPerLine; }
};

// Fills a bitmap of 8 (indexes), 24 or 32 bits with smooth gradients, shapes and a little noise.
void paint(Bitmap& bitmap);

// Gives an 8-bit bitmap the grey palette.
void makeGray(Bitmap& bitmap);

// Mean of each channel over a bitmap of any depth: blue, green, red.
struct Mean {
  double channel[3];
};
Mean meanColor(Bitmap& bitmap);

// Empty when two pictures have about the same mean colour.
std::string sameMean(Bitmap& a, Bitmap& b, double tolerance);

// A device-independent bitmap in a memory device context, top row first.
class DibSection {
 public:
  DibSection(Size size, int bits, const RGBQUAD* palette = nullptr);
  DibSection(const DibSection&) = delete;
  DibSection& operator=(const DibSection&) = delete;
  ~DibSection();

  void copyFrom(const Bitmap& bitmap);
  [[nodiscard]] HDC dc() const { return dc_; }
  [[nodiscard]] unsigned char* bits() const { return bits_; }

 private:
  HDC dc_;
  HBITMAP bitmap_;
  HGDIOBJ displaced_;
  unsigned char* bits_ = nullptr;
};

}  // namespace bench
