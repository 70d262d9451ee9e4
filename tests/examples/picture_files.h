// Picture files for the tests of zv, made by the encoders of the system, and a reader for BMP files that owes nothing
// to the program under test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>
#include <windows.h>

/// One kind of frame: what a file holds.
struct FrameFormat {
  const char* name;
  const GUID& container;
  const GUID& pixelFormat;
  int bitsPerPixel;
  bool indexed;  /// The pixels are indexes into samplePalette(), else grey levels or colours.
};

/// A directory of its own, removed at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  std::string file(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

constexpr int sampleWidth = 37;
constexpr int sampleHeight = 11;

/// Writes the sample picture. COM must be initialised.
void writeSample(const FrameFormat& format, const std::string& path, double dpiX, double dpiY);

/// The colour, 0xRRGGBB, of a pixel of the sample picture in that form; row 0 is the top row.
uint32_t sampleColor(const FrameFormat& format, int x, int y);

struct BmpFile {
  int width = 0;
  int height = 0;
  int bitsPerPixel = 0;
  int pixelsPerMeterX = 0;
  int pixelsPerMeterY = 0;
  std::vector<uint32_t> colors;  /// 0xRRGGBB, row by row from the top.

  uint32_t at(int x, int y) const { return colors[static_cast<size_t>(y * width + x)]; }
};

BmpFile readBmp(const std::string& path);
