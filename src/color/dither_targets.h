// Target palettes of a dither run and how a colour finds its entry. Fixed palettes are indexed by arithmetic, other
// palettes through a table that is filled as colours appear.
#pragma once

#include <zavo.h>

#include <cstdint>

#include "color/color_matcher.h"
#include "color/palettes.h"

namespace zavo {

// Kinds of target palette: 0 none of the fixed ones, bits + 1 the fixed palette of 1 to 8 bits.
constexpr int noFixedKind = 0;
constexpr int cubeKind = 10;  // the colour cube of six levels
constexpr unsigned cubeColors = 216;

constexpr int fixedKind(int bitsPerPixel) {
  return bitsPerPixel + 1;
}

struct DitherTarget {
  int kind;
  unsigned colorCount;  // entries to choose from
  RGBQUAD palette[256];
  int16_t lanes[256][4];  // the palette as blue, green, red, 0; errors are measured against it
  uint8_t cells[512];     // for the fixed palette of 4 bits: the entry for the top three bits of red, green, blue
  ColorMatcher matcher;   // for other palettes: the search
  uint16_t* match;        // and its answers by colour key: the entry + 1, or 0 while unknown
};

// Fills in everything but `match`. `palette` is null or not looked at for a fixed kind.
void setDitherTarget(DitherTarget& target, int kind, const RGBQUAD* palette, unsigned colorCount);

// The fixed kind whose palette begins with these `count` entries, 1 to 256, and has the next power of two of them.
[[nodiscard]] int fixedKindOf(const RGBQUAD* palette, unsigned count);

// The target is grey throughout.
[[nodiscard]] bool isGrayTarget(const DitherTarget& target);

// How far ordered dithering reaches: the offset of a threshold t is t / k - 128 / k for the level code k, 1 to 8.
[[nodiscard]] int levelCode(const DitherTarget& target);

// Quantisers: the entry for a colour word of blue, green, red from the low byte up; the top byte may be anything.

constexpr unsigned blueOf(uint32_t color) {
  return color & 0xFF;
}
constexpr unsigned greenOf(uint32_t color) {
  return color >> 8 & 0xFF;
}
constexpr unsigned redOf(uint32_t color) {
  return color >> 16 & 0xFF;
}

// Through the match table. The first colour of a key decides for all of that key.
class MatchQuantiser {
 public:
  explicit MatchQuantiser(DitherTarget& target) : match_(target.match), matcher_(target.matcher) {}
  uint8_t operator()(uint32_t color) const {
    const uint32_t key = (color >> 9 & 0x7C00) | (color >> 6 & 0x3E0) | (color >> 3 & 0x1F);
    uint16_t entry = match_[key];
    if (entry == 0) [[unlikely]] {
      entry = search(color);
      match_[key] = entry;
    }
    return static_cast<uint8_t>(entry - 1);
  }

 private:
  [[nodiscard]] uint16_t search(uint32_t color) const;

  uint16_t* match_;
  ColorMatcher& matcher_;
};

// Black and white, or four greys: the top bits of the brightness.
class BrightnessQuantiser {
 public:
  explicit BrightnessQuantiser(const DitherTarget& target) : shift_(target.kind == fixedKind(1) ? 7 : 6) {}
  uint8_t operator()(uint32_t color) const {
    return static_cast<uint8_t>(luminance(redOf(color), greenOf(color), blueOf(color)) >> shift_);
  }

 private:
  int shift_;
};

// Bits per channel of the fixed palettes that have even levels in every channel: 3, 5, 6, 7 and 8 bits.
struct ChannelBits {
  int red, green, blue;
};
constexpr ChannelBits channelBits(int kind) {
  switch (kind) {
    case fixedKind(3):
      return {1, 1, 1};
    case fixedKind(5):
      return {2, 2, 1};
    case fixedKind(6):
      return {2, 2, 2};
    case fixedKind(7):
      return {2, 3, 2};
    default:
      return {3, 3, 2};
  }
}

// The top bits of each channel, side by side.
class LevelsQuantiser {
 public:
  explicit LevelsQuantiser(const DitherTarget& target) : LevelsQuantiser(channelBits(target.kind)) {}
  uint8_t operator()(uint32_t color) const {
    return static_cast<uint8_t>((color >> redShift & redMask) | (color >> greenShift & greenMask) |
                                (color >> blueShift & blueMask));
  }

  int redShift, greenShift, blueShift;
  uint32_t redMask, greenMask, blueMask;

 private:
  explicit LevelsQuantiser(const ChannelBits& bits)
      : redShift(24 - bits.red - bits.green - bits.blue),
        greenShift(16 - bits.green - bits.blue),
        blueShift(8 - bits.blue),
        redMask(((1u << bits.red) - 1) << (bits.green + bits.blue)),
        greenMask(((1u << bits.green) - 1) << bits.blue),
        blueMask((1u << bits.blue) - 1) {}
};

// The sixteen standard colours.
class CellQuantiser {
 public:
  explicit CellQuantiser(const DitherTarget& target) : cells_(target.cells) {}
  uint8_t operator()(uint32_t color) const {
    return cells_[(color >> 15 & 0x1C0) | (color >> 10 & 0x38) | (color >> 5 & 7)];
  }

 private:
  const uint8_t* cells_;
};

class CubeQuantiser {
 public:
  explicit CubeQuantiser(const DitherTarget&) {}
  uint8_t operator()(uint32_t color) const {
    return static_cast<uint8_t>((redOf(color) / 51 * 6 + greenOf(color) / 51) * 6 + blueOf(color) / 51);
  }
};

// Calls choose.operator()<Quantiser>() for the quantiser of a kind.
template <typename Choose>
auto chooseByQuantiser(int kind, Choose choose) {
  switch (kind) {
    case noFixedKind:
      return choose.template operator()<MatchQuantiser>();
    case fixedKind(1):
    case fixedKind(2):
      return choose.template operator()<BrightnessQuantiser>();
    case fixedKind(4):
      return choose.template operator()<CellQuantiser>();
    case cubeKind:
      return choose.template operator()<CubeQuantiser>();
    default:
      return choose.template operator()<LevelsQuantiser>();
  }
}

}  // namespace zavo
