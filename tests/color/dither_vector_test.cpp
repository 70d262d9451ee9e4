// The vector functions of dithering give the same bytes as the plain ones.
#include <zavo.h>

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

#include "color/dither_rows.h"

// What the routines under test ask of the rest of the library.
namespace zavo {

unsigned nearestIndex(const RGBQUAD* palette, unsigned count, unsigned red, unsigned green, unsigned blue) {
  return Zv_FindPaletteIndex(palette, count, red, green, blue);
}

const RGBQUAD* fixedPalette(int bitsPerPixel) {
  return Zv_IntGetFixedPalette(bitsPerPixel);
}

const RGBQUAD* cubePalette() {
  static RGBQUAD cube[256];
  for (unsigned i = 0; i < cubeColors; ++i) {
    cube[i] = {static_cast<uint8_t>(i % 6 * 51), static_cast<uint8_t>(i / 6 % 6 * 51),
               static_cast<uint8_t>(i / 36 * 51), 0};
  }
  return cube;
}

}  // namespace zavo

namespace {

using namespace zavo;

constexpr int kinds[] = {noFixedKind,  fixedKind(1), fixedKind(2), fixedKind(3), fixedKind(4),
                         fixedKind(5), fixedKind(6), fixedKind(7), fixedKind(8), cubeKind};

// A dither run with the rows that the functions work on.
class TestRun {
 public:
  TestRun(unsigned width, int kind, const std::vector<RGBQUAD>& palette)
      : run(static_cast<DitherRun*>(Zv_OsAllocInit(sizeof(DitherRun), 1)), Zv_OsFree) {
    setDitherTarget(run->target, kind, palette.data(), static_cast<unsigned>(palette.size()));
    match_.resize(matchTableEntries);
    run->target.match = match_.data();
    run->width = width;
    sums_.resize(size_t{width} * 4);
    run->sums = sums_.data();
    for (size_t i = 0; i < ErrorRows::count; ++i) {
      errors_[i].resize((size_t{width} + 2 * ErrorRows::margin) * 4);
      run->errors.rows[i] = errors_[i].data() + ErrorRows::margin * 4;
    }
  }

  std::vector<uint8_t> dither(DitherRowFunction function, const std::vector<uint8_t>& pixels) {
    std::vector<uint8_t> indexes(size_t{run->width} + 16, 0xC5);
    function(*run, indexes.data(), pixels.data());
    return indexes;
  }

  // Zeros, as the library makes it.
  std::unique_ptr<DitherRun, decltype(&Zv_OsFree)> run;

 private:
  std::vector<uint16_t> match_;
  std::vector<int32_t> sums_;
  std::vector<int16_t> errors_[ErrorRows::count];
};

std::vector<RGBQUAD> somePalette(std::mt19937& random) {
  std::vector<RGBQUAD> palette(1 + random() % 256);
  for (auto& entry : palette) {
    const auto bits = static_cast<uint32_t>(random());
    entry = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8), static_cast<uint8_t>(bits >> 16), 0};
  }
  return palette;
}

// Noise, and now and then a row of one extreme, where errors pile up.
std::vector<uint8_t> someRow(size_t bytes, std::mt19937& random) {
  const unsigned choice = random() % 4;
  std::vector<uint8_t> row(bytes, choice == 0 ? 255 : 0);
  if (choice > 1) {
    for (auto& byte : row) byte = static_cast<uint8_t>(random());
  }
  return row;
}

TEST(DitherVectors, DiffusionAgrees) {
  std::mt19937 random(261);
  for (int method = 1; method <= diffusionMethods; ++method) {
    for (const int kind : kinds) {
      const DitherRowFunction vector = vectorDiffusion(method, kind), plain = plainDiffusion(method, kind);
      for (unsigned width = 1; width <= 40; ++width) {
        SCOPED_TRACE(testing::Message() << "method " << method << ", kind " << kind << ", width " << width);
        const auto palette = somePalette(random);
        TestRun a(width, kind, palette), b(width, kind, palette);
        for (int row = 0; row < 6; ++row) {
          const auto pixels = someRow(size_t{width} * 4, random);
          ASSERT_EQ(a.dither(vector, pixels), b.dither(plain, pixels)) << "row " << row;
        }
      }
    }
  }
}

TEST(DitherVectors, QuantisingAgrees) {
  std::mt19937 random(262);
  for (const int kind : kinds) {
    const QuantiseFunction vector = vectorQuantise(kind);
    if (vector == nullptr) continue;
    for (unsigned width = 1; width <= 70; ++width) {
      TestRun run(width, kind, {});
      const auto pixels = someRow(size_t{width} * 4, random);
      ASSERT_EQ(run.dither(vector, pixels), run.dither(plainQuantise(kind), pixels)) << kind << ", width " << width;
    }
  }
}

TEST(DitherVectors, OffsetsAgree) {
  std::mt19937 random(263);
  OrderedOffsets offsets;
  for (const int method : {7, 8}) {
    for (const int levelCode : {1, 2, 6, 8}) {
      for (const bool gray : {false, true}) {
        setOrderedOffsets(offsets, method, levelCode, gray);
        for (size_t count = 1; count <= 130; ++count) {
          const size_t y = random() % 8;
          std::vector<uint8_t> source = someRow(count, random), a(count + 16, 0xC5), b = a;
          vectorAddOffsets(a.data(), source.data(), count, offsets.raise[y], offsets.lower[y]);
          plainAddOffsets(b.data(), source.data(), count, offsets.raise[y], offsets.lower[y]);
          ASSERT_EQ(a, b) << "method " << method << ", level code " << levelCode << ", " << count << " bytes";
          vectorAddOffsets(source.data(), source.data(), count, offsets.raise[y], offsets.lower[y]);
          ASSERT_TRUE(std::equal(source.begin(), source.end(), b.begin())) << "in place, " << count << " bytes";
        }
      }
    }
  }
}

}  // namespace
