// Works with zavoview as a visitor would and leaves pictures of its window for the documentation (script/screenshots):
// the photograph ZAVO_PHOTO in, PNG files in the folder ZAVO_SCREENSHOTS.
#include <zavo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <numbers>
#include <objbase.h>
// commctrl.h needs the rest of windows.h first.
#include <commctrl.h>

#include "common/picture.h"
#include "common/wic.h"
#include "examples/picture_files.h"
#include "viewer/gif_file.h"
#include "viewer/viewer_driver.h"
#include "zavoview/resource.h"

namespace {

using zv::Picture;

constexpr int PositionPart = 4;  // of the status bar

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

class Screenshots : public testing::Test {
 protected:
  void SetUp() override {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (variable("ZAVO_SCREENSHOTS").empty()) GTEST_SKIP() << "script/screenshots runs this";
  }
  void TearDown() override { CoUninitialize(); }

  static std::string photo() { return variable("ZAVO_PHOTO"); }

  /// Gives the window its size and waits until it is painted.
  static void arrange(const ViewerDriver& viewer, SIZE size) {
    SetWindowPos(viewer.window(), nullptr, 20, 20, size.cx, size.cy, SWP_NOZORDER);
    EXPECT_TRUE(viewer.bringToFront());
    settle();
  }
  static void settle() { Sleep(600); }

  /// The window as it is on the screen, in the colours of a small file.
  static void save(const ViewerDriver& viewer, const std::string& name) {
    RECT rect;
    GetWindowRect(viewer.window(), &rect);
    const HDC screen = GetDC(nullptr);
    Picture picture;
    EXPECT_EQ(KSUCCESS, Zv_ScreenCaptureBitmap(screen, picture.handle(), &rect));
    ReleaseDC(nullptr, screen);
    reduceColors(picture);
    zv::writePicture(variable("ZAVO_SCREENSHOTS") + "\\" + name, picture);
  }

  /// The commonest colours stay as they are: those of the window's parts, and of plain grounds. The rest of the palette
  /// is chosen for the rest.
  static void reduceColors(Picture& picture) {
    constexpr unsigned exactColors = 24;
    std::map<COLORREF, int> counts;
    for (int y = 0; y < picture->Height; y++)
      for (int x = 0; x < picture->Width; x++) counts[Zv_GetPixelColor(picture.handle(), y, x)]++;
    std::vector<std::pair<int, COLORREF>> byCount;
    for (const auto& [color, count] : counts) byCount.emplace_back(count, color);
    std::ranges::sort(byCount, std::greater());
    byCount.resize(std::min<size_t>(byCount.size(), exactColors));

    Picture optimised;
    std::vector<RGBQUAD> palette(256 - exactColors);
    zv::check(Zv_ColorResBitmap(picture.handle(), optimised.handle(), 8, COLORRES_OPTIMISED_PALETTE | COLORRES_NEAREST,
                                nullptr, 256 - exactColors),
              "choose the colours");
    zv::check(Zv_GetBitmapColors(optimised.handle(), 0, 256 - exactColors, palette.data()), "choose the colours");
    for (const auto& [count, color] : byCount)
      palette.push_back({GetBValue(color), GetGValue(color), GetRValue(color), 0});
    picture.handle()->DitheringMethod = 1;
    zv::check(Zv_ColorResBitmap(picture.handle(), nullptr, 8, COLORRES_GIVEN_PALETTE, palette.data(),
                                static_cast<unsigned>(palette.size())),
              "reduce the colours");
  }

  /// Where a pixel of the photograph is in the canvas, for a view that is scrolled to `corner`.
  static POINT seenAt(POINT corner, double scale, int x, int y) {
    return {std::lround(x * scale) - corner.x, std::lround(y * scale) - corner.y};
  }
};

TEST_F(Screenshots, Selection) {
  const ViewerDriver viewer("\"" + photo() + "\"");
  arrange(viewer, {860, 600});
  viewer.command(ID_ACTUAL_SIZE);
  viewer.command(ID_ZOOM_OUT);
  constexpr double scale = 2.0 / 3;
  // Which part of the photograph is seen, the status bar tells.
  viewer.hover({0, 0});
  int left = 0;
  int top = 0;
  EXPECT_EQ(2, std::sscanf(viewer.status(PositionPart).c_str(), "%d, %d", &left, &top));
  const POINT corner{std::lround(left * scale), std::lround(top * scale)};
  viewer.command(ID_TOOL_POLYGON);
  const POINT africa[] = {{990, 308},  {1080, 300}, {1140, 330}, {1215, 335}, {1270, 440}, {1320, 455},
                          {1290, 530}, {1345, 590}, {1320, 690}, {1240, 640}, {1180, 725}, {1110, 715},
                          {1075, 600}, {1075, 500}, {1020, 490}, {925, 470},  {915, 390},  {960, 330}};
  for (const POINT& point : africa) viewer.click(seenAt(corner, scale, point.x, point.y));
  viewer.doubleClick(seenAt(corner, scale, africa[0].x, africa[0].y));
  viewer.command(ID_TOOL_ELLIPSE);
  viewer.command(ID_MODE_ADD);
  viewer.drag(seenAt(corner, scale, 1410, 300), seenAt(corner, scale, 1530, 500));
  settle();
  save(viewer, "zavoview-selection.png");
}

TEST_F(Screenshots, Adjusted) {
  const ViewerDriver viewer("\"" + photo() + "\"");
  viewer.command(ID_ADJUST);
  arrange(viewer, {860, 560});
  const HWND bar = viewer.parentOf(IDC_INTENSITY);
  const struct {
    int slider;
    int position;
  } settings[] = {{IDC_INTENSITY, 80}, {IDC_CONTRAST, 300}, {IDC_GAMMA, 45}};
  for (const auto& setting : settings) {
    SendDlgItemMessageW(bar, setting.slider, TBM_SETPOS, TRUE, setting.position);
    SendMessageW(bar, WM_HSCROLL, SB_ENDSCROLL, reinterpret_cast<LPARAM>(GetDlgItem(bar, setting.slider)));
  }
  settle();
  save(viewer, "zavoview-adjusted.png");
}

// A globe that turns: the photograph is a map whose columns are longitudes and whose rows are latitudes.
constexpr int globeSize = 360;
constexpr int samples = 2;  // each way, in a pixel
constexpr int globeFrames = 12;
constexpr unsigned globeColors = 128;

/// Adds the colour that is seen at a point of the frame.
void addSample(double (&sum)[3], Picture& map, int frame, double column, double row) {
  constexpr double radius = globeSize / 2.0 - 8;
  const double x = (column - globeSize / 2.0) / radius;
  const double y = (row - globeSize / 2.0) / radius;
  if (x * x + y * y > 1) return;
  const double z = std::sqrt(1 - x * x - y * y);
  const double turn = std::atan2(x, z) / (2 * std::numbers::pi) + 0.55 - static_cast<double>(frame) / globeFrames;
  const double latitude = std::asin(y) / std::numbers::pi + 0.5;
  const COLORREF color =
      Zv_GetPixelColor(map.handle(), std::min(map->Height - 1, static_cast<int>(latitude * map->Height)),
                       static_cast<int>((turn - std::floor(turn)) * map->Width));
  const double light = std::clamp(0.45 + 0.75 * z - 0.25 * x - 0.2 * y, 0.0, 1.0);
  const BYTE levels[] = {GetRValue(color), GetGValue(color), GetBValue(color)};
  // Brighter than the photograph, whose seas are nearly black.
  for (int channel = 0; channel < 3; channel++) sum[channel] += 255 * light * std::pow(levels[channel] / 255.0, 0.7);
}

Picture globe(Picture& map, int frame) {
  Picture picture;
  zv::check(Zv_CreateBitmap(picture.handle(), ALLOC_MEMORY, globeSize, globeSize, 24, ORDER_BLUE_FIRST, nullptr,
                            VIEW_UPRIGHT),
            "make a frame");
  for (int row = 0; row < globeSize; row++) {
    for (int column = 0; column < globeSize; column++) {
      double sum[3] = {};
      for (int i = 0; i < samples * samples; i++)
        addSample(sum, map, frame, column + (i % samples + 0.5) / samples, row + (i / samples + 0.5) / samples);
      const auto level = [&](int channel) {
        return static_cast<BYTE>(std::lround(sum[channel] / (samples * samples)));
      };
      Zv_PutPixelColor(picture.handle(), row, column, RGB(level(0), level(1), level(2)));
    }
  }
  return picture;
}

/// The frames get one palette, as a GIF file has it.
void writeGlobe(const std::string& path, Picture& map) {
  BitmapListHandle list = nullptr;
  zv::check(Zv_CreateBitmapList(&list), "keep the frames");
  for (int frame = 0; frame < globeFrames; frame++) {
    Picture picture = globe(map, frame);
    picture.handle()->DitheringMethod = 1;
    zv::check(Zv_InsertBitmapListItem(list, ~0u, picture.handle()), "keep the frame");
    *picture.handle() = {};
  }
  zv::check(Zv_ColorResBitmapList(list, 8, COLORRES_OPTIMISED_PALETTE, nullptr, globeColors), "reduce the colours");
  std::vector<uint32_t> palette;
  std::vector<GifFrame> frames;
  for (unsigned index = 0; index < globeFrames; index++) {
    BitmapHandle item;
    Zv_GetBitmapListItem(list, index, &item);
    if (palette.empty()) {
      RGBQUAD colors[globeColors];
      Zv_GetBitmapColors(&item, 0, globeColors, colors);
      for (const RGBQUAD& color : colors)
        palette.push_back(static_cast<uint32_t>(color.rgbRed << 16 | color.rgbGreen << 8 | color.rgbBlue));
    }
    GifFrame frame{0, 0, globeSize, globeSize, std::vector<unsigned char>(globeSize * globeSize), 10};
    const int wasLocked = Zv_LockBitmap(&item);
    for (int row = 0; row < globeSize; row++)
      Zv_GetBitmapRow(&item, frame.indexes.data() + static_cast<size_t>(row) * globeSize, static_cast<unsigned>(row),
                      globeSize);
    Zv_UnlockBitmap(&item, wasLocked);
    frames.push_back(std::move(frame));
  }
  Zv_DestroyBitmapList(list);
  writeGif(path, globeSize, globeSize, palette, frames);
}

TEST_F(Screenshots, Animation) {
  const TemporaryDirectory directory;
  zv::PictureFile map = zv::readPicture(photo());
  zv::check(Zv_ChangeBitmapViewPerspective(nullptr, map.picture.handle(), VIEW_UPRIGHT), "turn the map upright");
  writeGlobe(directory.file("globe.gif"), map.picture);
  const ViewerDriver viewer("\"" + directory.file("globe.gif") + "\"");
  arrange(viewer, {700, 500});
  // The menu is left as it is: what moves is told in the status bar.
  viewer.command(ID_FIRST_FRAME);
  for (int i = 0; i < 2; i++) viewer.command(ID_NEXT_FRAME);
  settle();
  save(viewer, "zavoview-animation.png");
}

}  // namespace
