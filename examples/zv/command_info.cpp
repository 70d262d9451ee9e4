// zv info: what a picture is, as the library holds it.
#include <cstdio>

#include "command.h"
#include "common/wic.h"

namespace zv {

namespace {

const char* depthNote(const BitmapHandle& bitmap) {
  if (bitmap.BitsPerPixel <= 8) return "palette indexes";
  return bitmap.ColorOrder == ORDER_BLUE_FIRST ? "blue first" : "red first";
}

const char* grayText(int gray) {
  static const char* const texts[] = {"no", "yes", "yes, white first", "yes, uneven steps"};
  return texts[gray & 3];
}

const char* perspectiveText(int perspective) {
  switch (perspective) {
    case VIEW_BOTTOM_UP:
      return "bottom-up";
    case VIEW_TURNED_90:
      return "turned by 90 degrees";
    case VIEW_TURNED_270:
      return "turned by 270 degrees";
    default:
      return "upright";
  }
}

void runInfo(Arguments& arguments) {
  const std::string path = arguments.takeOperand("the picture");
  arguments.finish();
  PictureFile file = readPicture(path);
  const BitmapHandle& bitmap = *file.picture.handle();

  std::printf("%s\n", path.c_str());
  std::printf("  format       %s, %llu bytes\n", file.format.c_str(), file.bytes);
  std::printf("  size         %d x %d pixels\n", bitmap.Width, bitmap.Height);
  std::printf("  depth        %d bits, %s\n", bitmap.BitsPerPixel, depthNote(bitmap));
  if (bitmap.BitsPerPixel <= 8)
    std::printf("  colours      palette of %u\n", bitmap.ColorCount);
  else
    std::printf("  colours      direct\n");
  std::printf("  grey         %s\n", grayText(Zv_IsGrayScaleBitmap(file.picture.handle())));
  std::printf("  resolution   %d x %d dpi\n", bitmap.XResolution, bitmap.YResolution);
  std::printf("  perspective  %s\n", perspectiveText(bitmap.ViewPerspective));
  std::printf("  in memory    %u bytes, %u a row\n", bitmap.DataSize, bitmap.BytesPerLine);
}

}  // namespace

const Command infoCommand{"info", "FILE", "Tells format, size, depth, colours and resolution of a picture.", nullptr,
                          runInfo};

}  // namespace zv
