// The plain row functions of colour pixels: one loop, instantiated for every pair of sizes.
#include "color/pixel_rows.h"

#include <type_traits>

#include "color/color_pixels.h"

namespace zavo {
namespace {

// Alpha lives on between equal sizes and from 32 to 16 bits; a fourth byte that is made is 0.
template <typename Source, typename Destination>
constexpr bool keepsAlpha = std::is_same_v<Source, Destination> ||
                            (std::is_same_v<Source, Pixel32> && std::is_same_v<Destination, Pixel16>);

template <typename Source, typename Destination, bool swap>
void convertPixel(uint8_t* destination, const uint8_t* source) {
  PixelColor color = Source::load(source);
  if constexpr (!keepsAlpha<Source, Destination>) color.alpha = 0;
  Destination::store(destination, swap ? swapEnds(color) : color);
}

template <typename Source, typename Destination, bool swap>
void convertRow(uint8_t* destination, const uint8_t* source, unsigned width) {
  if constexpr (Destination::bytes > Source::bytes) {
    destination += size_t{width} * Destination::bytes;
    source += size_t{width} * Source::bytes;
    for (unsigned i = 0; i < width; ++i) {
      destination -= Destination::bytes;
      source -= Source::bytes;
      convertPixel<Source, Destination, swap>(destination, source);
    }
  } else {
    for (unsigned i = 0; i < width; ++i) {
      convertPixel<Source, Destination, swap>(destination, source);
      destination += Destination::bytes;
      source += Source::bytes;
    }
  }
}

template <typename Source, typename Destination>
constexpr PixelRowFunction swapped = convertRow<Source, Destination, true>;
template <typename Source, typename Destination>
constexpr PixelRowFunction straight = convertRow<Source, Destination, false>;

}  // namespace

constexpr PixelRowTable plainPixelRows = {{
    {{nullptr, nullptr},
     {straight<PixelGray, Pixel16>, straight<PixelGray, Pixel16>},
     {straight<PixelGray, Pixel24>, straight<PixelGray, Pixel24>},
     {straight<PixelGray, Pixel32>, straight<PixelGray, Pixel32>}},
    {{straight<Pixel16, PixelGray>, swapped<Pixel16, PixelGray>},
     {nullptr, swapped<Pixel16, Pixel16>},
     {straight<Pixel16, Pixel24>, swapped<Pixel16, Pixel24>},
     {straight<Pixel16, Pixel32>, swapped<Pixel16, Pixel32>}},
    {{straight<Pixel24, PixelGray>, swapped<Pixel24, PixelGray>},
     {straight<Pixel24, Pixel16>, swapped<Pixel24, Pixel16>},
     {nullptr, swapped<Pixel24, Pixel24>},
     {straight<Pixel24, Pixel32>, swapped<Pixel24, Pixel32>}},
    {{straight<Pixel32, PixelGray>, swapped<Pixel32, PixelGray>},
     {straight<Pixel32, Pixel16>, swapped<Pixel32, Pixel16>},
     {straight<Pixel32, Pixel24>, swapped<Pixel32, Pixel24>},
     {nullptr, swapped<Pixel32, Pixel32>}},
}};

}  // namespace zavo
