// Codes of nine bits, one for each pixel; a clear code often enough that the codes never become longer.
#include "viewer/gif_file.h"

#include <algorithm>
#include <fstream>

namespace {

constexpr unsigned clearCode = 256;
constexpr unsigned endCode = 257;
constexpr int pixelsBetweenClears = 200;

class GifStream {
 public:
  explicit GifStream(const std::string& path) : stream_(path, std::ios::binary) {}

  void text(const char* characters) { stream_ << characters; }
  void byte(int value) { stream_.put(static_cast<char>(value)); }
  void word(int value) {
    byte(value & 255);
    byte(value >> 8);
  }
  void block(const std::vector<unsigned char>& bytes) {
    for (size_t start = 0; start < bytes.size(); start += 255) {
      const size_t count = std::min<size_t>(255, bytes.size() - start);
      byte(static_cast<int>(count));
      stream_.write(reinterpret_cast<const char*>(bytes.data() + start), static_cast<std::streamsize>(count));
    }
    byte(0);
  }

 private:
  std::ofstream stream_;
};

std::vector<unsigned char> encode(const std::vector<unsigned char>& indexes) {
  std::vector<unsigned char> bytes;
  unsigned pending = 0;
  int pendingBits = 0;
  const auto put = [&](unsigned code) {
    pending |= code << pendingBits;
    for (pendingBits += 9; pendingBits >= 8; pendingBits -= 8, pending >>= 8)
      bytes.push_back(static_cast<unsigned char>(pending));
  };
  int untilClear = 0;
  for (const unsigned char index : indexes) {
    if (untilClear-- == 0) {
      put(clearCode);
      untilClear = pixelsBetweenClears;
    }
    put(index);
  }
  put(endCode);
  bytes.push_back(static_cast<unsigned char>(pending));
  return bytes;
}

void writeFrame(GifStream& gif, const GifFrame& frame) {
  const bool transparent = frame.transparentIndex >= 0;
  for (const int value : {0x21, 0xF9, 4, frame.disposal << 2 | (transparent ? 1 : 0)}) gif.byte(value);
  gif.word(frame.delay);
  gif.byte(transparent ? frame.transparentIndex : 0);
  gif.byte(0);
  gif.byte(0x2C);
  for (const int value : {frame.left, frame.top, frame.width, frame.height}) gif.word(value);
  gif.byte(0);
  gif.byte(8);
  gif.block(encode(frame.indexes));
}

}  // namespace

void writeGif(const std::string& path, int width, int height, const std::vector<uint32_t>& palette,
              const std::vector<GifFrame>& frames) {
  GifStream gif(path);
  gif.text("GIF89a");
  gif.word(width);
  gif.word(height);
  gif.byte(0xF7);
  gif.word(0);
  for (size_t i = 0; i < 256; i++) {
    const uint32_t color = i < palette.size() ? palette[i] : 0;
    for (const int shift : {16, 8, 0}) gif.byte(static_cast<int>(color >> shift & 255));
  }
  for (const GifFrame& frame : frames) writeFrame(gif, frame);
  gif.byte(0x3B);
}
