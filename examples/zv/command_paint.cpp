// zv paint: paints a picture on a device like the screen and writes what the device shows.
#include <cstdio>
#include <optional>

#include "command.h"
#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"

namespace zv {

namespace {

struct PaintOptions {
  std::string input;
  std::string output;
  unsigned flags = PAINT_DITHER | PAINT_INDEX_COLORS;
  int brightness = 0;
  int contrast = 0;
  int gamma = 100;  /// In hundredths.
  SizeArgument size{0, 0, 100};
  COLORREF background = RGB(255, 255, 255);
  std::optional<RECT> source, sourceClip, destination, destinationClip;
};

std::string help() {
  return "The device has the depth of the screen: on one of 8 bits pictures of more colours are dithered.\n"
         "  --ordered                 dithers by an ordered pattern; else by error diffusion\n"
         "  --clustered               the same with clustered dots, where the device is black and white\n"
         "  --cube                    dithers to the 6 x 6 x 6 colour cube; else to the 3-3-2 palette\n"
         "  --fixed-palette           brings pictures with palettes of their own onto the fixed ones as well\n"
         "  --no-dither               leaves it to the device to find colours\n"
         "  --gray                    shows black-and-white pictures as grey levels where they shrink\n"
         "  --brightness N            -1000 to 1000\n"
         "  --contrast N              -1000 to 1000\n"
         "  --gamma N                 0.01 to 100; 1 changes nothing\n"
         "  --size WxH                the device's size; else the picture's\n"
         "  --background RRGGBB       what the device shows where nothing is painted\n"
         "  --source X,Y,W,H          the part of the picture to paint\n"
         "  --source-clip X,Y,W,H     paints no more than this of it\n"
         "  --destination X,Y,W,H     where it goes on the device; else all of it\n"
         "  --destination-clip X,Y,W,H  paints nothing beside this\n";
}

RECT parseRect(const std::string& option, const std::string& text) {
  const std::vector<int> numbers = parseNumbers(option, text, 4);
  if (numbers.size() != 4) throw UsageError(option + " takes four numbers, not '" + text + "'");
  return {numbers[0], numbers[1], numbers[0] + numbers[2], numbers[1] + numbers[3]};
}

bool parseFlag(PaintOptions& options, const std::string& name) {
  const struct {
    const char* name;
    unsigned set, clear;
  } all[] = {{"--ordered", PAINT_ORDERED_DITHER, 0}, {"--clustered", PAINT_ORDERED_DITHER | PAINT_CLUSTERED_DOT, 0},
             {"--cube", PAINT_CUBE_PALETTE, 0},      {"--fixed-palette", PAINT_FIXED_PALETTE, 0},
             {"--no-dither", 0, PAINT_DITHER},       {"--gray", PAINT_GRAY_1BIT, 0}};
  for (const auto& flag : all) {
    if (name != flag.name) continue;
    options.flags = (options.flags | flag.set) & ~flag.clear;
    return true;
  }
  return false;
}

bool parseRects(PaintOptions& options, const std::string& name, Arguments& arguments) {
  const struct {
    const char* name;
    std::optional<RECT> PaintOptions::*rect;
  } all[] = {{"--source", &PaintOptions::source},
             {"--source-clip", &PaintOptions::sourceClip},
             {"--destination", &PaintOptions::destination},
             {"--destination-clip", &PaintOptions::destinationClip}};
  for (const auto& option : all) {
    if (name != option.name) continue;
    options.*option.rect = parseRect(name, arguments.takeValue(name));
    return true;
  }
  return false;
}

PaintOptions parse(Arguments& arguments) {
  PaintOptions options;
  options.input = arguments.takeOperand("the picture to read");
  options.output = arguments.takeOperand("the file to write");
  for (std::string name = arguments.takeOption(); !name.empty(); name = arguments.takeOption()) {
    if (parseFlag(options, name) || parseRects(options, name, arguments)) continue;
    if (name == "--brightness")
      options.brightness = parseNumber(name, arguments.takeValue(name), -1000, 1000);
    else if (name == "--contrast")
      options.contrast = parseNumber(name, arguments.takeValue(name), -1000, 1000);
    else if (name == "--gamma")
      options.gamma = parseHundredths(name, arguments.takeValue(name), 0, 10000);
    else if (name == "--size")
      options.size = parseSize(name, arguments.takeValue(name));
    else if (name == "--background")
      options.background = parseColor(name, arguments.takeValue(name));
    else
      throw UsageError("unknown option " + name + " (zv paint --help lists them)");
  }
  arguments.finish();
  outputFormat(options.output);
  return options;
}

/// A memory device that shows what the screen would.
class Device {
 public:
  Device(SIZE size, COLORREF background) : size_(size) {
    const HDC screen = GetDC(nullptr);
    dc_ = CreateCompatibleDC(screen);
    surface_ = CreateCompatibleBitmap(screen, size.cx, size.cy);
    ReleaseDC(nullptr, screen);
    if (dc_ == nullptr || surface_ == nullptr) {
      release();
      throw Failure("cannot make a device of this size: out of memory");
    }
    displaced_ = SelectObject(dc_, surface_);
    const HBRUSH brush = CreateSolidBrush(background);
    const RECT all = {0, 0, size.cx, size.cy};
    FillRect(dc_, &all, brush);
    DeleteObject(brush);
  }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  ~Device() { release(); }

  [[nodiscard]] HDC dc() const { return dc_; }
  [[nodiscard]] RECT area() const { return {0, 0, size_.cx, size_.cy}; }

  /// The palette is the device's from now on; null changes nothing.
  void take(HPALETTE palette) {
    if (palette == nullptr) return;
    palette_ = palette;
    SelectPalette(dc_, palette, FALSE);
    RealizePalette(dc_);
  }
  /// What is on the device.
  Picture shown() {
    SelectObject(dc_, displaced_);
    Picture picture;
    check(Zv_ConvertFromDDB(dc_, picture.handle(), surface_, palette_), "read what is shown");
    return picture;
  }

 private:
  void release() {
    DeleteDC(dc_);
    DeleteObject(surface_);
    DeleteObject(palette_);
  }

  SIZE size_;
  HDC dc_ = nullptr;
  HBITMAP surface_ = nullptr;
  HGDIOBJ displaced_ = nullptr;
  HPALETTE palette_ = nullptr;
};

void tell(HDC dc, Picture& picture) {
  static const char* const modes[] = {"as stored",
                                      "widened",
                                      "dithered",
                                      "as grey levels",
                                      "as grey levels",
                                      "as grey levels where it is scaled",
                                      "as grey levels where it is scaled"};
  int bits = 0;
  int mode = 0;
  Zv_GetDitherFlags(dc, picture.handle(), &bits, &mode);
  std::printf("a device of %d bits, painted %s\n", bits, modes[mode]);
}

const RECT* pointerTo(const std::optional<RECT>& rect) {
  return rect ? &*rect : nullptr;
}

void runPaint(Arguments& arguments) {
  const PaintOptions options = parse(arguments);
  PictureFile file = readPicture(options.input);
  Picture& picture = file.picture;

  Zv_SetDisplayMode(~0u, options.flags);
  check(Zv_SetPaintIntensity(options.brightness), "set the brightness");
  check(Zv_SetPaintContrast(options.contrast), "set the contrast");
  check(Zv_SetPaintGamma(options.gamma), "set the gamma");

  RECT seen = {0, 0, picture->Width, picture->Height};
  check(Zv_RectFromBitmap(picture.handle(), VIEW_UPRIGHT, &seen), "measure the picture");
  Device device(options.size.resolve(seen.right, seen.bottom), options.background);
  tell(device.dc(), picture);
  device.take(Zv_CreatePaintPalette(device.dc(), picture.handle()));
  const RECT destination = options.destination.value_or(device.area());
  check(Zv_PaintDC(device.dc(), picture.handle(), pointerTo(options.source), pointerTo(options.sourceClip),
                   &destination, pointerTo(options.destinationClip), SRCCOPY),
        "paint");
  Picture shown = device.shown();
  writePicture(options.output, shown);
}

}  // namespace

const Command paintCommand{"paint", "IN OUT [options]", "Paints a picture on a device and writes what it shows.", help,
                           runPaint};

}  // namespace zv
