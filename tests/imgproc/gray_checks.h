// What grey images and halftones have in common: they replace the image of a handle and keep the rest of it.
#pragma once

#include <zavo.h>

#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "color/colors.h"
#include "support/test_bitmap.h"

namespace zavotest {

// Every value of a record that is to outlive the image.
inline void describe(BitmapHandle& bitmap, int perspective) {
  bitmap.ViewPerspective = perspective;
  bitmap.XResolution = 301;
  bitmap.YResolution = 77;
  bitmap.Flags |= BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT;
  bitmap.PlaybackLeft = 5;
  bitmap.PlaybackTop = -3;
  bitmap.PlaybackDelay = 1234;
  // Of a palette, the fixed one, white's index and black's.
  bitmap.PlaybackBackground = bitmap.BitsPerPixel <= 8 ? 0x01000000u | (bitmap.ColorCount - 1) : RGB(1, 2, 3);
  bitmap.PlaybackTransparentColor = bitmap.BitsPerPixel <= 8 ? 0x01000000u : RGB(4, 5, 6);
  bitmap.PlaybackDisposal = 2;
}

// Expects of a converted bitmap what describe() said of it, in a new image of `bits` bits.
inline void expectDescribed(const BitmapHandle& bitmap, const BitmapHandle& before, int bits) {
  EXPECT_EQ(bitmap.Width, before.Width);
  EXPECT_EQ(bitmap.Height, before.Height);
  EXPECT_EQ(bitmap.BitsPerPixel, bits);
  EXPECT_EQ(bitmap.BytesPerLine, static_cast<unsigned>((bitmap.Width * bits + 31) / 32 * 4));
  EXPECT_EQ(bitmap.ColorCount, 1u << bits);
  EXPECT_EQ(bitmap.Flags, unsigned{BMF_ALLOCATED | BMF_MEMORY | BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT});
  EXPECT_EQ(bitmap.ViewPerspective, before.ViewPerspective);
  EXPECT_EQ(bitmap.XResolution, 301);
  EXPECT_EQ(bitmap.YResolution, 77);
  EXPECT_EQ(bitmap.PlaybackLeft, 5);
  EXPECT_EQ(bitmap.PlaybackTop, -3);
  EXPECT_EQ(bitmap.PlaybackDelay, 1234u);
  const bool indexes = before.BitsPerPixel <= 8;
  EXPECT_EQ(bitmap.PlaybackBackground, indexes ? 0x01000000u | ((1u << bits) - 1) : RGB(1, 2, 3));
  EXPECT_EQ(bitmap.PlaybackTransparentColor, indexes ? 0x01000000u : RGB(4, 5, 6));
  EXPECT_EQ(bitmap.PlaybackDisposal, before.PlaybackDisposal);
  EXPECT_EQ(bitmap.Region, before.Region) << "the region itself moves";
}

// The bits behind the last pixel of each row are zero.
inline void expectCleanPadding(BitmapHandle& bitmap) {
  const std::vector<uint8_t> bytes = bytesOf(bitmap);
  const auto usedBits = static_cast<size_t>(bitmap.Width * bitmap.BitsPerPixel);
  for (size_t row = 0; row < bytes.size(); row += bitmap.BytesPerLine) {
    for (size_t bit = usedBits; bit < size_t{bitmap.BytesPerLine} * 8; ++bit) {
      ASSERT_EQ(bytes[row + bit / 8] >> (7 - bit % 8) & 1, 0) << "bit " << bit << " of a row";
    }
  }
}

// The brightness of every pixel, row by row.
inline std::vector<unsigned> levelsOf(BitmapHandle& bitmap) {
  std::vector<unsigned> levels;
  for (const Color& color : colorsOf(bitmap)) levels.push_back(brightness(color));
  return levels;
}

// A bitmap of noise with colours of noise.
struct NoiseBitmap : TestBitmap {
  NoiseBitmap(int width, int height, int bits, std::mt19937& random, int memoryType = ALLOC_MEMORY)
      : TestBitmap(width, height, bits, memoryType) {
    fillWithNoise(*this, random);
    if (bits <= 8) giveRandomPalette(*this, random);
    if (bits >= 16) ColorOrder = random() & 1 ? ORDER_BLUE_FIRST : ORDER_RED_FIRST;
  }
};

}  // namespace zavotest
