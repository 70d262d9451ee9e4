// Rows of pixels from one colour space to another, in place. Every conversion goes through blue, green, red, so that
// each space needs two functions. All arithmetic is in whole numbers and rounds to the nearest.
#include <zavo.h>

#include <algorithm>
#include <cstdint>

namespace zavo {
namespace {

struct Bgr {
  int blue, green, red;
};

struct Triple {
  int first, second, third;
};

constexpr int spaces = 5;
constexpr int circle = 256;  // hue of a full turn

uint8_t clampByte(int value) {
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// numerator / denominator, rounded to the nearest, for a positive denominator.
constexpr int roundedQuotient(int numerator, int denominator) {
  const int doubled = 2 * numerator + denominator;
  const int quotient = doubled / (2 * denominator);
  return quotient - (doubled < 0 && doubled % (2 * denominator) != 0 ? 1 : 0);
}

// --- BT.601, full range; factors in 65536ths

constexpr int scaleBits = 16;

constexpr int scaled(double factor) {
  return static_cast<int>(factor * (1 << scaleBits) + (factor < 0 ? -0.5 : 0.5));
}

constexpr int unscale(int value) {
  return (value + (1 << (scaleBits - 1))) >> scaleBits;
}

Triple yCbCrFromBgr(const Bgr& c) {
  constexpr int redWeight = scaled(0.299), blueWeight = scaled(0.114);
  constexpr int greenWeight = (1 << scaleBits) - redWeight - blueWeight;
  constexpr int half = 1 << (scaleBits - 1);
  constexpr int cbRed = scaled(-0.299 / 1.772), crBlue = scaled(-0.114 / 1.402);
  return {unscale(redWeight * c.red + greenWeight * c.green + blueWeight * c.blue),
          128 + unscale(half * c.blue + cbRed * c.red - (half + cbRed) * c.green),
          128 + unscale(half * c.red + crBlue * c.blue - (half + crBlue) * c.green)};
}

Bgr bgrFromYCbCr(const Triple& t) {
  const int cb = t.second - 128, cr = t.third - 128;
  return {.blue = t.first + unscale(scaled(1.772) * cb),
          .green = t.first - unscale(scaled(0.114 * 1.772 / 0.587) * cb + scaled(0.299 * 1.402 / 0.587) * cr),
          .red = t.first + unscale(scaled(1.402) * cr)};
}

// --- Cyan, magenta, yellow

Triple cmyFromBgr(const Bgr& c) {
  return {255 - c.red, 255 - c.green, 255 - c.blue};
}

Bgr bgrFromCmy(const Triple& t) {
  return {.blue = 255 - t.third, .green = 255 - t.second, .red = 255 - t.first};
}

// --- Hue, with red at 0, green at a third of the circle, blue at two thirds

// `high` and `low` are the largest and smallest channel. 0 for a grey.
int hueOf(const Bgr& c, int high, int low) {
  const int range = high - low;
  if (range == 0) return 0;
  int third = 0, offset = c.green - c.blue;
  if (high != c.red) {
    third = high == c.green ? 1 : 2;
    offset = high == c.green ? c.blue - c.red : c.red - c.green;
  }
  return roundedQuotient(circle * (2 * third * range + offset), 6 * range) & (circle - 1);
}

// The colour of a hue whose channels lie between `low` and `high`.
Bgr bgrOfHue(int hue, int low, int high) {
  const int sixth = hue * 6 / circle;
  const int along = hue * 6 % circle;  // how far into the sixth, of `circle`
  const int rising = low + roundedQuotient((high - low) * along, circle);
  const int falling = low + roundedQuotient((high - low) * (circle - along), circle);
  switch (sixth) {
    case 0:
      return {.blue = low, .green = rising, .red = high};
    case 1:
      return {.blue = low, .green = high, .red = falling};
    case 2:
      return {.blue = rising, .green = high, .red = low};
    case 3:
      return {.blue = high, .green = falling, .red = low};
    case 4:
      return {.blue = high, .green = low, .red = rising};
    default:
      return {.blue = falling, .green = low, .red = high};
  }
}

int highest(const Bgr& c) {
  return std::max({c.red, c.green, c.blue});
}

int lowest(const Bgr& c) {
  return std::min({c.red, c.green, c.blue});
}

Triple hsvFromBgr(const Bgr& c) {
  const int high = highest(c), low = lowest(c);
  return {hueOf(c, high, low), high == 0 ? 0 : roundedQuotient(255 * (high - low), high), high};
}

Bgr bgrFromHsv(const Triple& t) {
  const int high = t.third;
  return bgrOfHue(t.first, high - roundedQuotient(high * t.second, 255), high);
}

// Saturation is the range of the channels as a share of the widest range at that lightness.
Triple hlsFromBgr(const Bgr& c) {
  const int high = highest(c), low = lowest(c);
  const int sum = high + low;
  const int widest = sum <= 255 ? sum : 510 - sum;
  return {hueOf(c, high, low), (sum + 1) / 2, widest == 0 ? 0 : roundedQuotient(255 * (high - low), widest)};
}

Bgr bgrFromHls(const Triple& t) {
  const int sum = 2 * t.second;
  const int widest = sum <= 255 ? sum : 510 - sum;
  const int range = roundedQuotient(widest * t.third, 255);
  const int low = std::max((sum - range + 1) / 2, 0);
  return bgrOfHue(t.first, low, std::min(low + range, 255));
}

template <Bgr (*toBgr)(const Triple&)>
void rowToBgr(uint8_t* row, unsigned width) {
  for (uint8_t* end = row + size_t{width} * 3; row < end; row += 3) {
    const Bgr color = toBgr({row[0], row[1], row[2]});
    row[0] = clampByte(color.blue);
    row[1] = clampByte(color.green);
    row[2] = clampByte(color.red);
  }
}

template <Triple (*fromBgr)(const Bgr&)>
void rowFromBgr(uint8_t* row, unsigned width) {
  for (uint8_t* end = row + size_t{width} * 3; row < end; row += 3) {
    const Triple color = fromBgr({.blue = row[0], .green = row[1], .red = row[2]});
    row[0] = clampByte(color.first);
    row[1] = clampByte(color.second);
    row[2] = clampByte(color.third);
  }
}

using RowFunction = void (*)(uint8_t* row, unsigned width);

// In the order of the SPACE_ values; null for the space in the middle.
constexpr RowFunction toBgrFunctions[spaces] = {nullptr, rowToBgr<bgrFromYCbCr>, rowToBgr<bgrFromCmy>,
                                                rowToBgr<bgrFromHsv>, rowToBgr<bgrFromHls>};
constexpr RowFunction fromBgrFunctions[spaces] = {nullptr, rowFromBgr<yCbCrFromBgr>, rowFromBgr<cmyFromBgr>,
                                                  rowFromBgr<hsvFromBgr>, rowFromBgr<hlsFromBgr>};

bool isSpace(int space) {
  return space >= 0 && space < spaces;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_ConvertColorSpace(unsigned char* buffer, unsigned width, int sourceSpace, int destinationSpace) {
  if (buffer == nullptr || width == 0 || !isSpace(sourceSpace) || !isSpace(destinationSpace)) return KERR_BAD_PARAMETER;
  if (sourceSpace == destinationSpace) return KSUCCESS;
  if (const RowFunction toBgr = toBgrFunctions[sourceSpace]; toBgr != nullptr) toBgr(buffer, width);
  if (const RowFunction fromBgr = fromBgrFunctions[destinationSpace]; fromBgr != nullptr) fromBgr(buffer, width);
  return KSUCCESS;
}
