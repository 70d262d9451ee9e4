// --bits and what refines it: the palette, the number of colours, the dithering. Given without --bits, these three
// choose the depth themselves.
#include <array>
#include <bit>
#include <optional>
#include <vector>

#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"
#include "progress.h"
#include "steps.h"

namespace zv {

namespace {

constexpr Choice paletteKinds[] = {
    {"fixed", COLORRES_FIXED_PALETTE},         {"gray", COLORRES_GRAY_PALETTE},
    {"grey", COLORRES_GRAY_PALETTE},           {"optimised", COLORRES_OPTIMISED_PALETTE},
    {"optimized", COLORRES_OPTIMISED_PALETTE},
};

constexpr Choice ditherMethods[] = {
    {"none", 0},           {"floyd-steinberg", 1}, {"stucki", 2}, {"burkes", 3},    {"sierra", 4},
    {"stevenson-arce", 5}, {"jarvis", 6},          {"bayer", 7},  {"clustered", 8},
};

/// The library's colour cube: six levels in each channel.
constexpr unsigned cubeColors = 216;

struct Colors {
  std::array<RGBQUAD, 256> entries;
  unsigned count;
};

Colors readColors(const std::string& path) {
  PictureFile file = readPicture(path);
  if (file.picture->BitsPerPixel > 8) throw Failure(path + " has no palette");
  Colors colors{{}, file.picture->ColorCount};
  check(Zv_GetBitmapColors(file.picture.handle(), 0, colors.count, colors.entries.data()), "read the palette");
  return colors;
}

int depthFor(unsigned colorCount) {
  return std::max(1, static_cast<int>(std::bit_width(colorCount - 1)));
}

class ColorStep : public Step {
 public:
  std::optional<int> bits;
  std::optional<unsigned> paletteKind;  /// A COLORRES_ palette option.
  std::string paletteFile;
  bool cube = false;  /// The fixed palette meant is the colour cube.
  std::optional<unsigned> colorCount;
  std::optional<int> dithering;

  /// Called after each option: what contradicts itself is an error of the command line.
  void checkOptions() const {
    const bool indexed = paletteKind || colorCount;
    if (indexed && bits.value_or(1) > 8) throw UsageError("a palette needs --bits 1 to 8");
    if (colorCount && paletteKind.value_or(COLORRES_OPTIMISED_PALETTE) != COLORRES_OPTIMISED_PALETTE)
      throw UsageError("--colors goes with --palette optimised only");
    if (cube && bits.value_or(8) != 8) throw UsageError("--palette cube needs --bits 8");
    if (colorCount && bits && *colorCount > 1u << *bits)
      throw UsageError(format("%u colours do not fit in %d bits", *colorCount, *bits));
  }

  void apply(Picture& picture) const override {
    Colors given{};
    if (!paletteFile.empty()) given = readColors(paletteFile);
    const int depth = chooseDepth(picture, given.count);
    unsigned options = depth > 8 ? unsigned{COLORRES_BLUE_FIRST} : paletteKind.value_or(0u);
    if (colorCount) options = COLORRES_OPTIMISED_PALETTE;
    if (dithering == 0) options |= COLORRES_NEAREST;
    if (dithering) picture.handle()->DitheringMethod = *dithering;
    const unsigned count = given.count != 0 ? given.count : cube ? cubeColors : colorCount.value_or(0);
    const ProgressLine progress("colours");
    check(Zv_ColorResBitmap(picture.handle(), nullptr, depth, options, given.entries.data(), count),
          "change the depth");
  }

 private:
  int chooseDepth(Picture& picture, unsigned givenColors) const {
    if (bits) return *bits;
    if (colorCount) return depthFor(*colorCount);
    if (cube) return 8;
    if (givenColors != 0) return depthFor(givenColors);
    return std::min(picture->BitsPerPixel, 8);
  }
};

constexpr Choice colorSpaces[] = {
    {"bgr", SPACE_BGR}, {"ycbcr", SPACE_YCBCR}, {"cmy", SPACE_CMY}, {"hsv", SPACE_HSV}, {"hls", SPACE_HLS},
};

/// The three bytes of a pixel become those of another space; the file does not know, and shows them as colours.
class ColorSpaceStep : public Step {
 public:
  ColorSpaceStep(int from, int to) : from_(from), to_(to) {}

  void apply(Picture& picture) const override {
    BitmapHandle* bitmap = picture.handle();
    check(Zv_ColorResBitmap(bitmap, nullptr, 24, COLORRES_BLUE_FIRST, nullptr, 0), "change the depth");
    std::vector<unsigned char> row(bitmap->BytesPerLine);
    const PixelLock lock(picture);
    for (unsigned y = 0; y < static_cast<unsigned>(bitmap->Height); y++) {
      Zv_GetBitmapRow(bitmap, row.data(), y, bitmap->BytesPerLine);
      check(Zv_ConvertColorSpace(row.data(), static_cast<unsigned>(bitmap->Width), from_, to_), "convert");
      Zv_PutBitmapRow(bitmap, row.data(), y, bitmap->BytesPerLine);
    }
  }

 private:
  int from_;
  int to_;
};

/// The step the option belongs to: the one just before, unless that one has been told this already.
template <typename Member>
ColorStep& stepFor(StepList& steps, Member member) {
  auto* last = steps.last<ColorStep>();
  if (last != nullptr && !(last->*member)) return *last;
  return steps.add(std::make_unique<ColorStep>());
}

void parseBits(StepList& steps, Arguments& arguments, const std::string& option) {
  const std::string text = arguments.takeValue(option);
  const int bits = parseNumber(option, text, 1, 32);
  if (bits > 8 && bits != 16 && bits != 24 && bits != 32) throw UsageError(option + " takes 1 to 8, 16, 24 or 32");
  ColorStep& step = stepFor(steps, &ColorStep::bits);
  step.bits = bits;
  step.checkOptions();
}

void parsePalette(StepList& steps, Arguments& arguments, const std::string& option) {
  const std::string text = arguments.takeValue(option);
  ColorStep& step = stepFor(steps, &ColorStep::paletteKind);
  if (text.find('.') != std::string::npos) {
    step.paletteKind = COLORRES_GIVEN_PALETTE;
    step.paletteFile = text;
  } else if (text == "cube") {
    step.paletteKind = COLORRES_FIXED_PALETTE;
    step.cube = true;
  } else {
    step.paletteKind = static_cast<unsigned>(parseChoice(option, text, paletteKinds));
  }
  step.checkOptions();
}

void parseColors(StepList& steps, Arguments& arguments, const std::string& option) {
  ColorStep& step = stepFor(steps, &ColorStep::colorCount);
  step.colorCount = static_cast<unsigned>(parseNumber(option, arguments.takeValue(option), 1, 256));
  step.checkOptions();
}

void parseDither(StepList& steps, Arguments& arguments, const std::string& option) {
  const std::string text = arguments.takeValue(option);
  const bool isNumber = text.size() == 1 && text[0] >= '0' && text[0] <= '8';
  stepFor(steps, &ColorStep::dithering).dithering = isNumber ? text[0] - '0' : parseChoice(option, text, ditherMethods);
}

void parseColorSpace(StepList& steps, Arguments& arguments, const std::string& option) {
  const std::string text = arguments.takeValue(option);
  const size_t colon = text.find(':');
  const int from = colon == std::string::npos ? SPACE_BGR : parseChoice(option, text.substr(0, colon), colorSpaces);
  const int to = parseChoice(option, colon == std::string::npos ? text : text.substr(colon + 1), colorSpaces);
  steps.add(std::make_unique<ColorSpaceStep>(from, to));
}

const StepOption options[] = {
    {"--bits", "N", "New depth: 1 to 8, 16, 24 or 32 bits.", parseBits},
    {"--palette", "KIND", "fixed, cube, gray, optimised, or a picture file whose palette is taken.", parsePalette},
    {"--colors", "N", "At most N colours, chosen for the picture.", parseColors},
    {"--dither", "METHOD",
     "0 none, 1 floyd-steinberg, 2 stucki, 3 burkes, 4 sierra, 5 stevenson-arce, 6 jarvis, 7 bayer, 8 clustered.",
     parseDither},
    {"--colorspace", "[FROM:]TO", "Pixel values in another space: bgr, ycbcr, cmy, hsv or hls.", parseColorSpace},
};

}  // namespace

const std::span<const StepOption> colorOptions = options;

}  // namespace zv
