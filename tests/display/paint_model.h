// What a paint must show, pixel by pixel, the slow way.
#pragma once

#include <zavo.h>

#include <array>
#include <cstdint>
#include <optional>
#include <random>

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

// Brightness, contrast and gamma, as the library's table has them. To be asked for while devices are real.
using AdjustTable = std::array<uint8_t, 256>;
AdjustTable currentAdjustTable();

// Paints on a canvas of 0xRRGGBB, with the thread's display mode, as mode `paintMode` on a device of `deviceBits`.
void paintModel(Picture& canvas, BitmapHandle& bitmap, const PaintRects& rects, int paintMode, int deviceBits,
                const AdjustTable& table);

}  // namespace zavotest
