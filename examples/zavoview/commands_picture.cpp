// The menu Picture: turning, mirroring, resizing, fewer colours.
#include <algorithm>
#include <bit>

#include "commands.h"
#include "dialogs.h"
#include "resource.h"
#include "viewer.h"

namespace zavoview {

namespace {

void rotate(Viewer& viewer, unsigned degrees) {
  viewer.change("rotate", [degrees](BitmapHandle* bitmap) {
    return Zv_RotateBitmap(bitmap, static_cast<int>(degrees), ROTATE_RESIZE, 0);
  });
}

void flip(Viewer& viewer, unsigned) {
  viewer.change("flip", Zv_FlipBitmap);
}

void mirror(Viewer& viewer, unsigned) {
  viewer.change("mirror", Zv_ReverseBitmap);
}

void resize(Viewer& viewer, unsigned) {
  const Picture& picture = viewer.document.picture();
  const std::optional<SizeChoice> choice = askSize(viewer.window(), picture->Width, picture->Height);
  if (!choice) return;
  viewer.change("resize", [&](BitmapHandle* bitmap) {
    return Zv_SizeBitmap(bitmap, choice->width, choice->height, choice->smooth ? SIZE_RESAMPLE : 0);
  });
}

void grayscale(Viewer& viewer, unsigned) {
  viewer.change("make it grey", Zv_GrayScaleBitmap);
}

void halftone(Viewer& viewer, unsigned screen) {
  viewer.change("halftone",
                [screen](BitmapHandle* bitmap) { return Zv_HalfToneBitmap(bitmap, static_cast<int>(screen)); });
}

void reduceColors(Viewer& viewer, unsigned) {
  const std::optional<ColorChoice> choice = askColors(viewer.window());
  if (!choice) return;
  const int depth = std::max(1, static_cast<int>(std::bit_width(choice->count - 1)));
  const unsigned options = choice->palette | (choice->dithering == 0 ? COLORRES_NEAREST : 0);
  viewer.change("reduce the colours", [&](BitmapHandle* bitmap) {
    bitmap->DitheringMethod = choice->dithering;
    return Zv_ColorResBitmap(bitmap, nullptr, depth, options, nullptr, choice->count);
  });
}

void trueColor(Viewer& viewer, unsigned) {
  viewer.change("change the depth", [](BitmapHandle* bitmap) {
    return Zv_ColorResBitmap(bitmap, nullptr, 24, COLORRES_BLUE_FIRST, nullptr, 0);
  });
}

constexpr Command commands[] = {
    {ID_ROTATE_LEFT, NeedsPicture, rotate, 270},
    {ID_ROTATE_RIGHT, NeedsPicture, rotate, 90},
    {ID_ROTATE_HALF, NeedsPicture, rotate, 180},
    {ID_FLIP, NeedsPicture, flip},
    {ID_MIRROR, NeedsPicture, mirror},
    {ID_RESIZE, NeedsPicture, resize},
    {ID_GRAYSCALE, NeedsPicture, grayscale},
    {ID_HALFTONE_CLUSTERED, NeedsPicture, halftone, HALFTONE_CLUSTERED},
    {ID_HALFTONE_DISPERSED, NeedsPicture, halftone, HALFTONE_DISPERSED},
    {ID_REDUCE_COLORS, NeedsPicture, reduceColors},
    {ID_TRUE_COLOR, NeedsPicture, trueColor},
};

}  // namespace

std::span<const Command> pictureCommands() {
  return commands;
}

}  // namespace zavoview
