// A writer for animated GIF files, without compression: what a test or a screenshot plays.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct GifFrame {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  std::vector<unsigned char> indexes;  /// Below 128, row by row from the top.
  int delay = 10;                      /// Hundredths of a second.
  int disposal = 0;                    /// 2: to the background; 3: to what was there before.
  int transparentIndex = -1;           /// -1: none.
};

/// Writes frames that share a palette of up to 128 colours, 0xRRGGBB.
void writeGif(const std::string& path, int width, int height, std::vector<uint32_t> palette,
              const std::vector<GifFrame>& frames);
