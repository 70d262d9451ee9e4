// What a paint must show, pixel by pixel, the slow way.
#pragma once

#include <zavo.h>

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/test_bitmap.h"

namespace zavotest {

// The rectangles of a paint, as the caller gives them.
struct PaintRects {
  std::optional<RECT> source, sourceClip;
  RECT destination = {};
  std::optional<RECT> destinationClip;
  std::optional<RECT> storedRows;  // the rows at hand, in stored coordinates

  static const RECT* pointer(const std::optional<RECT>& rect) { return rect ? &*rect : nullptr; }
};

// Rectangles around a bitmap and a canvas of these sizes: stretched, shrunk, upside down, empty, reaching over.
PaintRects randomRects(std::mt19937& random, const BitmapHandle& bitmap, int canvasWidth, int canvasHeight);

// A bitmap of noise of any size, perspective, order, palette and storage.
struct RandomBitmap : TestBitmap {
  RandomBitmap(std::mt19937& random, int bits);
};

// Gives a bitmap of 1 bit the palette of black and white, or of white and black.
void giveBlackAndWhite(BitmapHandle& bitmap, bool descending);

// For a failure's text.
std::string describe(const BitmapHandle& bitmap, const PaintRects& rects);

// Brightness, contrast and gamma, as the library's table has them.
using AdjustTable = std::array<uint8_t, 256>;
AdjustTable currentAdjustTable();

// Paints on pixels of 0xRRGGBB, with the thread's display mode, as mode `paintMode` on a device of `deviceBits`.
class PaintModel {
 public:
  // To be made while devices are real, because it asks for the adjustment table.
  PaintModel(int width, int height, std::vector<uint32_t>& pixels)
      : width_(width), height_(height), pixels_(pixels), table_(currentAdjustTable()) {}

  void paint(BitmapHandle& bitmap, const PaintRects& rects, int paintMode, int deviceBits);

 private:
  struct Color {
    int red, green, blue;
  };
  struct Source;

  void paintColors(const Source& source);
  void paintGray(const Source& source, bool inverted);
  void paintDithered(const Source& source, bool turned, int bits);
  unsigned indexOf(const Color& color, int bits) const;
  Color target(unsigned index, int bits) const;
  [[nodiscard]] Color adjusted(const Color& color) const;
  void put(LONG x, LONG y, const Color& color);

  int width_;
  int height_;
  std::vector<uint32_t>& pixels_;
  AdjustTable table_;
  unsigned flags_ = 0;
};

}  // namespace zavotest
