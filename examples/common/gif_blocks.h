// The blocks of a GIF file that say where and how its frames are shown. The platform's decoder tells them too, but
// loses those of a frame that has a comment.
#pragma once

#include <cstdint>
#include <span>
#include <vector>
#include <windows.h>

namespace zv {

struct GifFrameBlocks {
  int left = 0;
  int top = 0;
  unsigned delay = 0;  /// Hundredths of a second.
  unsigned disposal = 0;
  bool waitsForUser = false;
  bool isTransparent = false;
  unsigned transparentIndex = 0;
};

struct GifBlocks {
  int width = 0;
  int height = 0;
  COLORREF background = 0;
  std::vector<GifFrameBlocks> frames;
};

/// Reads as far as the blocks make sense; a file that is no GIF has no frames.
GifBlocks readGifBlocks(std::span<const uint8_t> file);

}  // namespace zv
