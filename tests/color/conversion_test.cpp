// Conversion of pixel rows: every pair of depths and orders against a model that works pixel by pixel and bit by bit.
#include <zavo.h>

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;
using Palette = std::vector<RGBQUAD>;

constexpr int depths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 16, 24, 32};
constexpr uint8_t sentinel = 0xC5;

struct Format {
  int depth;
  int order;
  Palette palette;  // empty: null is passed

  [[nodiscard]] unsigned bits() const { return depth == 0 ? 8 : static_cast<unsigned>(depth); }
  [[nodiscard]] size_t rowBytes(int width) const { return (static_cast<size_t>(width) * bits() + 7) / 8; }
  [[nodiscard]] const RGBQUAD* colors() const {
    return palette.empty() ? Zv_IntGetFixedPalette(depth) : palette.data();
  }
};

struct Pixel {
  unsigned red = 0, green = 0, blue = 0, alpha = 0, index = 0;
};

unsigned readBits(const uint8_t* row, size_t first, unsigned count) {
  unsigned value = 0;
  for (size_t bit = first; bit < first + count; ++bit) value = value << 1 | (row[bit / 8] >> (7 - bit % 8) & 1);
  return value;
}

void writeBits(uint8_t* row, size_t first, unsigned count, unsigned value) {
  for (unsigned i = 0; i < count; ++i) {
    const size_t bit = first + i;
    const auto mask = static_cast<uint8_t>(0x80 >> bit % 8);
    const bool on = (value >> (count - 1 - i) & 1) != 0;
    row[bit / 8] = static_cast<uint8_t>(on ? row[bit / 8] | mask : row[bit / 8] & ~mask);
  }
}

Pixel readPixel(const uint8_t* row, size_t x, const Format& format) {
  const auto wide = [](unsigned c) { return c << 3 | c >> 2; };
  Pixel pixel;
  if (format.depth <= 8) {
    pixel.index = readBits(row, x * format.bits(), format.bits());
    pixel.red = pixel.green = pixel.blue = pixel.index;
    if (format.depth > 0) {
      const RGBQUAD& color = format.colors()[pixel.index];
      pixel.red = color.rgbRed, pixel.green = color.rgbGreen, pixel.blue = color.rgbBlue;
    }
    return pixel;
  }
  if (format.depth == 16) {
    const unsigned word = row[2 * x] | row[2 * x + 1] << 8;
    pixel.red = wide(word >> 10 & 31), pixel.green = wide(word >> 5 & 31), pixel.blue = wide(word & 31);
    pixel.alpha = word >> 15 != 0 ? 255 : 0;
  } else {
    const uint8_t* bytes = row + x * static_cast<size_t>(format.depth / 8);
    pixel.red = bytes[2], pixel.green = bytes[1], pixel.blue = bytes[0];
    pixel.alpha = format.depth == 32 ? bytes[3] : 0;
  }
  if (format.order == 0) std::swap(pixel.red, pixel.blue);
  return pixel;
}

void writePixel(uint8_t* row, size_t x, const Format& format, Pixel pixel) {
  if (format.depth <= 8) {
    writeBits(row, x * format.bits(), format.bits(), pixel.index);
    return;
  }
  if (format.order == 0) std::swap(pixel.red, pixel.blue);
  if (format.depth == 16) {
    const unsigned word =
        pixel.red / 8 << 10 | pixel.green / 8 << 5 | pixel.blue / 8 | (pixel.alpha > 127 ? 0x8000u : 0);
    row[2 * x] = static_cast<uint8_t>(word);
    row[2 * x + 1] = static_cast<uint8_t>(word >> 8);
    return;
  }
  uint8_t* bytes = row + x * static_cast<size_t>(format.depth / 8);
  bytes[0] = static_cast<uint8_t>(pixel.blue);
  bytes[1] = static_cast<uint8_t>(pixel.green);
  bytes[2] = static_cast<uint8_t>(pixel.red);
  if (format.depth == 32) bytes[3] = static_cast<uint8_t>(pixel.alpha);
}

bool sameStart(const Format& source, const Format& destination) {
  return source.depth > 0 && source.depth <= destination.depth && destination.depth <= 8 &&
         memcmp(source.colors(), destination.colors(), sizeof(RGBQUAD) << source.depth) == 0;
}

Pixel convertPixel(Pixel pixel, const Format& source, const Format& destination) {
  if (destination.depth == 0) {
    if (source.depth != 0) pixel.index = (2 * pixel.red + 5 * pixel.green + pixel.blue + 4) / 8;
  } else if (destination.depth <= 8) {
    if (!sameStart(source, destination)) {
      pixel.index =
          Zv_FindPaletteIndex(destination.colors(), 1u << destination.depth, pixel.red, pixel.green, pixel.blue);
    }
  } else if (source.depth != destination.depth && !(source.depth == 32 && destination.depth == 16)) {
    pixel.alpha = 0;
  }
  return pixel;
}

Bytes modelRow(const Bytes& row, int width, const Format& source, const Format& destination) {
  Bytes result(destination.rowBytes(width));
  for (size_t x = 0; x < static_cast<size_t>(width); ++x) {
    writePixel(result.data(), x, destination, convertPixel(readPixel(row.data(), x, source), source, destination));
  }
  return result;
}

// Clears what follows the last pixel in its byte.
void clearPadding(uint8_t* row, int width, const Format& format) {
  const size_t bits = static_cast<size_t>(width) * format.bits();
  if (bits % 8 != 0) row[bits / 8] = static_cast<uint8_t>(row[bits / 8] & ~(0xFF >> bits % 8));
}

int convert(uint8_t* row, int width, const Format& source, const Format& destination) {
  const auto pointer = [](const Palette& palette) { return palette.empty() ? nullptr : palette.data(); };
  return Zv_ConvertBuffer(row, width, source.depth, destination.depth, source.order, destination.order,
                          pointer(source.palette), pointer(destination.palette));
}

void expectModel(const Bytes& row, int width, const Format& source, const Format& destination, size_t offset) {
  const size_t used = std::max(source.rowBytes(width), destination.rowBytes(width));
  Bytes buffer(offset + used + 32, sentinel);
  std::copy(row.begin(), row.begin() + static_cast<ptrdiff_t>(source.rowBytes(width)),
            buffer.begin() + static_cast<ptrdiff_t>(offset));
  ASSERT_EQ(convert(buffer.data() + offset, width, source, destination), KSUCCESS);

  Bytes expected = modelRow(row, width, source, destination);
  uint8_t* result = buffer.data() + offset;
  for (size_t i = 0; i < offset; ++i) ASSERT_EQ(buffer[i], sentinel);
  for (size_t i = used; i < used + 32; ++i) ASSERT_EQ(result[i], sentinel) << "byte " << i << " after the row";
  clearPadding(result, width, destination);
  clearPadding(expected.data(), width, destination);
  ASSERT_EQ(Bytes(result, result + expected.size()), expected);
}

Palette randomPalette(std::mt19937& random, int depth) {
  Palette palette(1u << depth);
  for (RGBQUAD& color : palette) {
    const unsigned value = random();
    memcpy(&color, &value, sizeof color);
  }
  return palette;
}

std::vector<Format> variants(std::mt19937& random, int depth) {
  if (depth == 0) return {{0, 7, {}}};  // orders of grey are not looked at
  if (depth <= 8) return {{depth, -1, {}}, {depth, 5, randomPalette(random, depth)}};
  return {{depth, 0, {}}, {depth, 1, {}}};
}

TEST(ConvertBuffer, EveryPairOfFormatsAgreesWithTheModel) {
  for (const int sourceDepth : depths) {
    for (const int destinationDepth : depths) {
      const auto seed = static_cast<unsigned>(sourceDepth * 100 + destinationDepth);
      std::mt19937 random(seed);
      for (const Format& source : variants(random, sourceDepth)) {
        for (const Format& destination : variants(random, destinationDepth)) {
          SCOPED_TRACE(testing::Message() << "seed " << seed << ": " << source.depth << " order " << source.order
                                          << " to " << destination.depth << " order " << destination.order);
          for (int width = 1; width <= 70; ++width) {
            Bytes row(source.rowBytes(width));
            for (uint8_t& byte : row) byte = static_cast<uint8_t>(random());
            ASSERT_NO_FATAL_FAILURE(expectModel(row, width, source, destination, random() % 5)) << width;
          }
        }
      }
    }
  }
}

// Rows longer than any work area inside.
TEST(ConvertBuffer, LongRowsAgreeWithTheModel) {
  for (const int sourceDepth : depths) {
    for (const int destinationDepth : depths) {
      std::mt19937 random(static_cast<unsigned>(sourceDepth * 100 + destinationDepth));
      SCOPED_TRACE(testing::Message() << sourceDepth << " to " << destinationDepth);
      const Format source = variants(random, sourceDepth).back(), destination = variants(random, destinationDepth)[0];
      for (const int width : {511, 512, 513, 2051}) {
        Bytes row(source.rowBytes(width));
        // Few values make runs of one colour and colours that come back.
        for (uint8_t& byte : row) byte = static_cast<uint8_t>(random() % 3 * 120);
        ASSERT_NO_FATAL_FAILURE(expectModel(row, width, source, destination, 1)) << width;
      }
    }
  }
}

// The start of a destination palette that equals the source palette keeps indexes as they are, even where an earlier
// entry has the same colour.
TEST(ConvertBuffer, EqualPalettesKeepIndexes) {
  std::mt19937 random(1);
  Palette palette = randomPalette(random, 8);
  palette[3] = palette[1];
  for (const int destinationDepth : {2, 3, 5, 8}) {
    const Format source = {2, 0, palette}, destination = {destinationDepth, 0, palette};
    const Bytes row = {0x1B, 0xFF};
    ASSERT_NO_FATAL_FAILURE(expectModel(row, 8, source, destination, 0));
    Bytes buffer(8);
    buffer[0] = 0x1B;
    convert(buffer.data(), 4, source, destination);
    EXPECT_EQ(readBits(buffer.data(), 3 * destination.bits(), destination.bits()), 3u) << destinationDepth;
  }
}

TEST(ConvertBuffer, KnownValues) {
  const struct {
    const char* what;
    Format source, destination;
    Bytes before, after;
  } cases[] = {
      {"alpha 128 sets bit 15", {32, 1, {}}, {16, 1, {}}, {0, 0, 255, 128}, {0x00, 0xFC}},
      {"alpha 127 does not", {32, 1, {}}, {16, 1, {}}, {0, 0, 255, 127}, {0x00, 0x7C}},
      {"red last goes to the low bits of order 0", {32, 1, {}}, {16, 0, {}}, {0, 0, 255, 0}, {0x1F, 0x00}},
      {"white grey to 16 bits", {0, 0, {}}, {16, 1, {}}, {255}, {0xFF, 0x7F}},
      {"16-bit white to 24 bits", {16, 1, {}}, {24, 1, {}}, {0xFF, 0x7F}, {255, 255, 255}},
      {"5 bits are widened by their top bits", {16, 1, {}}, {24, 1, {}}, {0x24, 0x42}, {33, 140, 132}},
      {"fixed palette of 16 colours", {24, 1, {}}, {4, 0, {}}, {0, 0, 250, 190, 190, 190}, {0x98}},
      {"grey to black and white", {0, 0, {}}, {1, 0, {}}, {127, 128, 0, 255, 200, 1, 2, 3}, {0x58}},
      {"made alpha is 0", {24, 1, {}}, {32, 0, {}}, {1, 2, 3}, {3, 2, 1, 0}},
      {"exchanged channels keep alpha", {32, 1, {}}, {32, 0, {}}, {1, 2, 3, 77}, {3, 2, 1, 77}},
      {"exchanged channels keep bit 15", {16, 1, {}}, {16, 0, {}}, {0x01, 0xFC}, {0x1F, 0x84}},
      {"brightness", {24, 0, {}}, {0, 0, {}}, {100, 50, 25}, {(200 + 250 + 25 + 4) / 8}},
  };
  for (const auto& c : cases) {
    const auto width = static_cast<int>(c.before.size() * 8 / c.source.bits());
    Bytes buffer = c.before;
    buffer.resize(16);
    EXPECT_EQ(convert(buffer.data(), width, c.source, c.destination), KSUCCESS) << c.what;
    buffer.resize(c.after.size());
    EXPECT_EQ(buffer, c.after) << c.what;
  }
}

TEST(ConvertBuffer, RefusesBadArguments) {
  uint8_t row[64] = {1, 2, 3, 4};
  const struct {
    int width, sourceDepth, destinationDepth, sourceOrder, destinationOrder;
  } cases[] = {{0, 24, 32, 1, 1},  {-1, 24, 32, 1, 1}, {1, 9, 24, 1, 1},  {1, 24, 15, 1, 1},
               {1, 33, 24, 1, 1},  {1, 24, 64, 1, 1},  {1, -1, 24, 1, 1}, {1, 24, 32, 2, 1},
               {1, 24, 32, 1, -1}, {1, 16, 8, 2, 0},   {1, 8, 16, 0, 2}};
  for (const auto& c : cases) {
    EXPECT_EQ(Zv_ConvertBuffer(row, c.width, c.sourceDepth, c.destinationDepth, c.sourceOrder, c.destinationOrder,
                               nullptr, nullptr),
              KERR_BAD_PARAMETER)
        << c.width << " " << c.sourceDepth << " " << c.destinationDepth;
    EXPECT_EQ(row[0], 1);
  }
  EXPECT_EQ(Zv_ConvertBuffer(nullptr, 1, 24, 32, 1, 1, nullptr, nullptr), KERR_BAD_PARAMETER);
}

TEST(ConvertBuffer, UsesTheMatchTable) {
  std::mt19937 random(5);
  const Palette palette = randomPalette(random, 8);
  unsigned* table = Zv_CreateUserMatchTable(palette.data(), 256);
  ASSERT_NE(table, nullptr);
  for (const int depth : {16, 24, 32}) {
    for (const int order : {0, 1}) {
      const Format source = {depth, order, {}}, destination = {8, 0, palette};
      Bytes row(source.rowBytes(100));
      for (uint8_t& byte : row) byte = static_cast<uint8_t>(random());
      Bytes buffer = row;
      Zv_SetUserMatchTable(table);
      EXPECT_EQ(convert(buffer.data(), 100, source, destination), KSUCCESS);
      Zv_SetUserMatchTable(nullptr);
      for (size_t x = 0; x < 100; ++x) {
        const Pixel pixel = readPixel(row.data(), x, source);
        ASSERT_EQ(buffer[x], table[pixel.red / 8 << 10 | pixel.green / 8 << 5 | pixel.blue / 8] - 1) << x;
      }
    }
  }
  // Entries that are missing or too large for the destination are searched for.
  table[0x7FFF] = 0;
  table[0x7C00] = 200;
  Bytes buffer = {255, 255, 255, 0, 0, 255};
  Zv_SetUserMatchTable(table);
  EXPECT_EQ(convert(buffer.data(), 2, {24, 1, {}}, {4, 0, {}}), KSUCCESS);
  Zv_SetUserMatchTable(nullptr);
  EXPECT_EQ(buffer[0], 0xF9);
  Zv_FreeUserMatchTable(table);
}

TEST(CalcConvertSize, IsTheLargestOfThreeRows) {
  const struct {
    unsigned widthA, bitsA, widthB, bitsB, bytes;
  } cases[] = {{10, 8, 10, 24, 32},
               {10, 24, 10, 8, 32},
               {10, 0, 10, 1, 12},
               {1, 1, 1, 0, 4},
               {100, 1, 10, 24, 32},
               {100, 24, 10, 1, 300},
               {10, 1, 100, 24, 300},
               {33, 1, 1, 1, 8},
               {0, 8, 0, 8, 0},
               {0x40000000, 32, 1, 1, 0xFFFFFFFC},
               {0xFFFFFFFF, 0xFFFFFFFF, 1, 1, 0xFFFFFFFC}};
  for (const auto& c : cases) {
    EXPECT_EQ(Zv_CalcConvertSize(c.widthA, c.bitsA, c.widthB, c.bitsB), c.bytes) << c.widthA << " of " << c.bitsA;
  }
}

}  // namespace
