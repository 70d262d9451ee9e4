// What a bitmap's record says besides its pixels, which is to outlive a change of the image.
#pragma once

#include <zavo.h>

#include <gtest/gtest.h>

namespace zavotest {

// Sets every value that is to be kept. Colours of a palette, the fixed one, are white's index and black's.
inline void describe(BitmapHandle& bitmap, int perspective) {
  const bool indexes = bitmap.BitsPerPixel <= 8;
  bitmap.ViewPerspective = perspective;
  bitmap.XResolution = 301;
  bitmap.YResolution = 77;
  bitmap.DitheringMethod = 3;
  bitmap.Flags |= BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT;
  bitmap.PlaybackDelay = 1234;
  bitmap.PlaybackBackground = indexes ? 0x01000000u | (bitmap.ColorCount - 1) : RGB(1, 2, 3);
  bitmap.PlaybackTransparentColor = indexes ? 0x01000000u : RGB(4, 5, 6);
}

// Expects what describe() said of `before`, in an image of `bits` bits with a palette of the fixed white and black.
inline void expectDescribed(const BitmapHandle& bitmap, const BitmapHandle& before, int bits) {
  EXPECT_EQ(bitmap.Width, before.Width);
  EXPECT_EQ(bitmap.Height, before.Height);
  EXPECT_EQ(bitmap.BitsPerPixel, bits);
  EXPECT_EQ(bitmap.BytesPerLine, static_cast<unsigned>((bitmap.Width * bits + 31) / 32 * 4));
  EXPECT_EQ(bitmap.Flags, unsigned{BMF_ALLOCATED | BMF_MEMORY | BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT});
  EXPECT_EQ(bitmap.ViewPerspective, before.ViewPerspective);
  EXPECT_EQ(bitmap.XResolution, 301);
  EXPECT_EQ(bitmap.YResolution, 77);
  EXPECT_EQ(bitmap.PlaybackDelay, 1234u);
  COLORREF background = before.PlaybackBackground, transparent = before.PlaybackTransparentColor;
  if (before.BitsPerPixel <= 8) {
    background = bits <= 8 ? 0x01000000u | ((1u << bits) - 1) : RGB(255, 255, 255);
    transparent = bits <= 8 ? 0x01000000u : RGB(0, 0, 0);
  }
  EXPECT_EQ(bitmap.PlaybackBackground, background);
  EXPECT_EQ(bitmap.PlaybackTransparentColor, transparent);
}

}  // namespace zavotest
