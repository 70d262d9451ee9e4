#include "common/gif_blocks.h"

#include <algorithm>
#include <string_view>

namespace zv {

namespace {

constexpr uint8_t extensionMark = 0x21;
constexpr uint8_t imageMark = 0x2C;
constexpr uint8_t controlLabel = 0xF9;
constexpr uint8_t hasPalette = 0x80;

/// Bytes taken one after the other; behind the end there are zeros, which end every block.
class Reader {
 public:
  explicit Reader(std::span<const uint8_t> bytes) : rest_(bytes) {}

  uint8_t byte() {
    if (rest_.empty()) return 0;
    const uint8_t value = rest_[0];
    rest_ = rest_.subspan(1);
    return value;
  }
  int word() {
    const int low = byte();
    return low | byte() << 8;
  }
  std::span<const uint8_t> take(size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  /// The first of a chain of blocks; moves past all of them.
  std::span<const uint8_t> chain() {
    const auto first = take(byte());
    if (!first.empty()) {
      while (!take(byte()).empty()) {
      }
    }
    return first;
  }

 private:
  std::span<const uint8_t> rest_;
};

/// The colours that a descriptor announces, three bytes each.
std::span<const uint8_t> palette(Reader& reader, uint8_t flags) {
  return (flags & hasPalette) != 0 ? reader.take(size_t{3} << ((flags & 7) + 1)) : std::span<const uint8_t>();
}

void setControl(GifFrameBlocks& frame, std::span<const uint8_t> block) {
  Reader reader(block);
  const uint8_t flags = reader.byte();
  frame.isTransparent = (flags & 1) != 0;
  frame.waitsForUser = (flags & 2) != 0;
  frame.disposal = flags >> 2 & 7;
  frame.delay = static_cast<unsigned>(reader.word());
  frame.transparentIndex = reader.byte();
}

/// From behind the mark to behind the pixels.
void readImage(GifFrameBlocks& frame, Reader& reader) {
  frame.left = reader.word();
  frame.top = reader.word();
  reader.take(4);  // width and height
  palette(reader, reader.byte());
  reader.byte();  // width of the first codes
  reader.chain();
}

}  // namespace

GifBlocks readGifBlocks(std::span<const uint8_t> file) {
  GifBlocks blocks;
  Reader reader(file);
  const auto signature = reader.take(6);
  if (signature.size() < 6 || !std::ranges::equal(signature.first(4), std::string_view("GIF8"))) return blocks;
  blocks.width = reader.word();
  blocks.height = reader.word();
  const uint8_t flags = reader.byte();
  const size_t background = reader.byte();
  reader.byte();  // shape of a pixel
  if (const auto colors = palette(reader, flags); background * 3 + 3 <= colors.size())
    blocks.background = RGB(colors[background * 3], colors[background * 3 + 1], colors[background * 3 + 2]);

  GifFrameBlocks frame;
  for (uint8_t mark = reader.byte(); mark == extensionMark || mark == imageMark; mark = reader.byte()) {
    if (mark == extensionMark) {
      const uint8_t label = reader.byte();
      const auto block = reader.chain();
      if (label == controlLabel) setControl(frame, block);
      continue;
    }
    readImage(frame, reader);
    blocks.frames.push_back(frame);
    frame = {};
  }
  return blocks;
}

}  // namespace zv
