// Bitmaps for tests, and their pixels as plain numbers.
#pragma once

#include <zavo.h>

#include <cstdint>
#include <random>
#include <vector>

namespace zavotest {

constexpr int allDepths[] = {1, 2, 3, 4, 5, 6, 7, 8, 16, 24, 32};

// A record that is freed at the end.
struct TestBitmap : BitmapHandle {
  TestBitmap() : BitmapHandle{} {}
  // Allocated, of zeros, with the fixed palette; check with allocated().
  TestBitmap(int width, int height, int bits, int memoryType = ALLOC_MEMORY);
  TestBitmap(const TestBitmap&) = delete;
  TestBitmap& operator=(const TestBitmap&) = delete;
  ~TestBitmap() { Zv_FreeBitmap(this); }

  [[nodiscard]] bool allocated() const { return (Flags & BMF_ALLOCATED) != 0; }
};

// Stored pixels row by row; a pixel is its bits in storage order, the first the most significant.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> pixels;

  Picture() = default;
  Picture(int w, int h) : width(w), height(h), pixels(static_cast<size_t>(w) * static_cast<size_t>(h)) {}
  uint32_t& at(int x, int y) {
    return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
  }
  uint32_t at(int x, int y) const { return const_cast<Picture*>(this)->at(x, y); }
  // The pixel, or 0 outside.
  uint32_t orZero(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height ? at(x, y) : 0; }
  bool operator==(const Picture&) const = default;
};

Picture pictureOf(BitmapHandle& bitmap);

// Fills the rows with noise; the padding at their ends too, which no function may let show.
void fillWithNoise(BitmapHandle& bitmap, std::mt19937& random);

// Replaces the palette of a bitmap of up to 8 bits by one of random colours.
void giveRandomPalette(BitmapHandle& bitmap, std::mt19937& random);

// The stored rows, padding included, one after another; empty for an unallocated bitmap.
std::vector<uint8_t> bytesOf(BitmapHandle& bitmap);

// The colours of the bitmap's palette; empty for none.
std::vector<PALETTEENTRY> colorsOf(const BitmapHandle& bitmap);

}  // namespace zavotest
