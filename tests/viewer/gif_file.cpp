// Codes of eight bits, one for each pixel: a clear code is there often enough that they never become longer.
#include "viewer/gif_file.h"

#include <algorithm>
#include <fstream>

namespace {

constexpr int indexBits = 7;
constexpr unsigned char clearCode = 128;
constexpr unsigned char endCode = 129;
constexpr size_t pixelsBetweenClears = 100;

class GifStream {
 public:
  explicit GifStream(const std::string& path) : stream_(path, std::ios::binary) { stream_ << "GIF89a"; }

  void bytes(std::initializer_list<int> values) {
    for (const int value : values) stream_.put(static_cast<char>(value));
  }
  void words(std::initializer_list<int> values) {
    for (const int value : values) bytes({value & 255, value >> 8});
  }

 private:
  std::ofstream stream_;
};

void writeFrame(GifStream& gif, const GifFrame& frame) {
  const bool transparent = frame.transparentIndex >= 0;
  gif.bytes({0x21, 0xF9, 4, frame.disposal << 2 | (transparent ? 1 : 0)});
  gif.words({frame.delay});
  gif.bytes({transparent ? frame.transparentIndex : 0, 0, 0x2C});
  gif.words({frame.left, frame.top, frame.width, frame.height});
  gif.bytes({0, indexBits});
  // A block is a clear code and the pixels up to the next one.
  for (size_t at = 0; at < frame.indexes.size(); at += pixelsBetweenClears) {
    const size_t count = std::min(pixelsBetweenClears, frame.indexes.size() - at);
    gif.bytes({static_cast<int>(count) + 1, clearCode});
    for (size_t i = 0; i < count; i++) gif.bytes({frame.indexes[at + i]});
  }
  gif.bytes({1, endCode, 0});
}

}  // namespace

void writeGif(const std::string& path, int width, int height, std::vector<uint32_t> palette,
              const std::vector<GifFrame>& frames) {
  GifStream gif(path);
  gif.words({width, height});
  gif.bytes({0x80 | (indexBits - 1), 0, 0});
  palette.resize(size_t{1} << indexBits);
  for (const uint32_t color : palette) {
    for (const int shift : {16, 8, 0}) gif.bytes({static_cast<int>(color >> shift & 255)});
  }
  for (const GifFrame& frame : frames) writeFrame(gif, frame);
  gif.bytes({0x3B});
}
