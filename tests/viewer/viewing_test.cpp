// Opening, showing, zooming, adjusting and leaving.
#include <zavo.h>

#include <fstream>
// commctrl.h needs the rest of windows.h first.
#include <commctrl.h>

#include "viewer/gif_file.h"
#include "viewer/viewer_fixture.h"

namespace {

class Viewing : public ViewerTest {
 protected:
  /// Whether the picture at its actual size is on the screen, pixel for pixel.
  static bool shows(const ViewerDriver& viewer, const Model& model) {
    const ScreenPicture screen = viewer.seen();
    for (int y = 0; y < model.height; y++) {
      for (int x = 0; x < model.width; x++) {
        const POINT point = pointOf(viewer, {model.width, model.height}, x, y);
        if (rgbOf(screen.at(point.x, point.y)) != model.at(x, y)) return false;
      }
    }
    return true;
  }

  /// The sample as the library paints it into a bitmap of this process, with this process's settings.
  [[nodiscard]] Model painted() const {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, sampleWidth, -sampleHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    const Model model = sampleModel();
    std::vector<uint32_t> result(model.colors.size());
    BitmapHandle bitmap{};
    Zv_CreateBitmap(&bitmap, ALLOC_MEMORY, sampleWidth, sampleHeight, 24, ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT);
    for (int y = 0; y < sampleHeight; y++)
      for (int x = 0; x < sampleWidth; x++) {
        const uint32_t color = model.at(x, y);
        Zv_PutPixelColor(&bitmap, y, x, RGB(color >> 16 & 255, color >> 8 & 255, color & 255));
      }
    void* pixels = nullptr;
    const HDC dc = CreateCompatibleDC(nullptr);
    const HBITMAP section = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    const HGDIOBJ previous = SelectObject(dc, section);
    const RECT whole{0, 0, sampleWidth, sampleHeight};
    EXPECT_EQ(KSUCCESS, Zv_PaintDC(dc, &bitmap, nullptr, nullptr, &whole, nullptr, SRCCOPY));
    GdiFlush();
    for (size_t i = 0; i < result.size(); i++) result[i] = static_cast<const uint32_t*>(pixels)[i] & 0xFFFFFF;
    SelectObject(dc, previous);
    DeleteObject(section);
    DeleteDC(dc);
    Zv_FreeBitmap(&bitmap);
    return {sampleWidth, sampleHeight, std::move(result)};
  }
};

TEST_F(Viewing, ShowsTheFileOfTheCommandLine) {
  const ViewerDriver viewer(quoted("in.bmp"));
  EXPECT_TRUE(viewer.soon([&] { return viewer.title() == "in.bmp - zavoview"; })) << viewer.title();
  EXPECT_EQ("37 x 11, 24 bits", viewer.status(PicturePart));
  EXPECT_EQ("100 %", viewer.status(ScalePart));
  EXPECT_TRUE(viewer.soon([&] { return shows(viewer, sampleModel()); }));

  viewer.click(samplePoint(viewer, 5, 7));
  const uint32_t color = sampleColor(sample, 5, 7);
  EXPECT_EQ("5, 7", viewer.status(PositionPart));
  EXPECT_EQ("RGB " + std::to_string(color >> 16) + ", " + std::to_string(color >> 8 & 255) + ", " +
                std::to_string(color & 255),
            viewer.status(ColorPart));
}

TEST_F(Viewing, OpensByDialogAndByDrop) {
  std::ofstream(file("text.png")) << "no picture";
  writeSample({"gif", GUID_ContainerFormatPng, GUID_WICPixelFormat1bppIndexed, 1, true}, file("page.png"), 96, 96);
  const ViewerDriver viewer;
  EXPECT_EQ("zavoview", viewer.title());

  const HWND dialog = viewer.dialogOf(ID_OPEN);
  SendDlgItemMessageA(dialog, 0x47C, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file("in.bmp").c_str()));
  viewer.press(dialog, IDOK);
  EXPECT_TRUE(viewer.soon([&] { return viewer.title() == "in.bmp - zavoview"; })) << viewer.title();

  viewer.drop(file("page.png"));
  EXPECT_TRUE(viewer.soon([&] { return viewer.title() == "page.png - zavoview"; })) << viewer.title();
  EXPECT_EQ("37 x 11, 1 bit", viewer.status(PicturePart));
}

TEST_F(Viewing, SaysWhatCannotBeOpened) {
  std::ofstream(file("text.png")) << "no picture";
  const ViewerDriver empty(quoted("text.png"));
  HWND box = empty.dialog();
  EXPECT_EQ("cannot read " + file("text.png") + ": not a picture in a known format", empty.messageOf(box));
  empty.press(box, IDOK);
  EXPECT_EQ("zavoview", empty.title());
  for (const int id :
       {ID_SAVE, ID_ROTATE_LEFT, ID_FILL, ID_ZOOM_IN, ID_SELECT_ALL, ID_PLAY, ID_CROP, ID_UNDO, ID_CANCEL})
    empty.command(id);
  EXPECT_EQ("zavoview", empty.title()) << "commands without a picture do nothing";
}

TEST_F(Viewing, ZoomsByKeys) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  struct {
    WPARAM key;
    const char* scale;
  } const cases[] = {
      {VK_ADD, "150 %"},       {VK_ADD, "200 %"},      {VK_OEM_PLUS, "300 %"}, {VK_SUBTRACT, "200 %"},
      {VK_OEM_MINUS, "150 %"}, {VK_MULTIPLY, "100 %"}, {VK_SUBTRACT, "67 %"},  {VK_DIVIDE, "100 %"},
  };
  for (const auto& step : cases) {
    viewer.key(step.key);
    EXPECT_TRUE(viewer.soon([&] { return viewer.status(ScalePart) == step.scale; }))
        << viewer.status(ScalePart) << " instead of " << step.scale;
  }
}

TEST_F(Viewing, KnowsTheUsualKeys) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  ASSERT_TRUE(viewer.bringToFront());
  const auto selectionIs = [&](const char* text) {
    return viewer.soon([&] { return viewer.status(SelectionPart) == text; });
  };
  viewer.typeKey('A', {VK_CONTROL});
  EXPECT_TRUE(selectionIs("0, 0: 37 x 11"));
  viewer.typeKey('D', {VK_CONTROL});
  EXPECT_TRUE(selectionIs(""));
  viewer.typeKey('R', {VK_CONTROL});
  EXPECT_TRUE(viewer.soon([&] { return viewer.status(PicturePart) == "11 x 37, 24 bits"; }));
  viewer.typeKey('Z', {VK_CONTROL});
  EXPECT_TRUE(viewer.soon([&] { return viewer.status(PicturePart) == "37 x 11, 24 bits"; }));
  // Alt takes away from the selection, and letting go of it does not open the menu.
  EXPECT_TRUE(viewer.soon([&] {
    viewer.command(ID_SELECT_ALL);
    viewer.hold(VK_MENU, true);
    viewer.drag(samplePoint(viewer, 0, 0), samplePoint(viewer, 9, 10));
    viewer.hold(VK_MENU, false);
    return viewer.status(SelectionPart) == "10, 0: 27 x 11";
  }));
  viewer.typeKey('D', {VK_CONTROL});
  EXPECT_TRUE(selectionIs(""));
  // Menus open by their letters: Picture, Mirror.
  viewer.typeKey('P', {VK_MENU});
  viewer.typeKey('M', {});
  EXPECT_TRUE(viewer.soon([&] { return saved(viewer).at(0, 0) == sampleModel().at(sampleWidth - 1, 0); }));
}

TEST_F(Viewing, EnlargesExactlyOrSmoothly) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  while (viewer.status(ScalePart) != "800 %") viewer.command(ID_ZOOM_IN);
  const Model model = sampleModel();
  const Model large =
      makeModel(sampleWidth * 8, sampleHeight * 8, [&](int x, int y) { return model.at(x / 8, y / 8); });
  EXPECT_FALSE(shows(viewer, large)) << "scaling is smooth at first";
  viewer.command(ID_SMOOTH);
  EXPECT_TRUE(viewer.soon([&] { return shows(viewer, large); }));
}

TEST_F(Viewing, ScrollsToEveryCorner) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  viewer.command(ID_SMOOTH);
  while (viewer.status(ScalePart) != "3200 %") viewer.command(ID_ZOOM_IN);
  const auto cornerIs = [&](int x, int y) {
    return viewer.soon([&] {
      const ScreenPicture screen = viewer.seen();
      const COLORREF color = screen.at(x == 0 ? 0 : screen.width - 1, screen.height / 2);
      return rgbOf(color) == sampleColor(sample, x, y);
    });
  };
  SendMessageW(viewer.canvas(), WM_HSCROLL, SB_TOP, 0);
  EXPECT_TRUE(cornerIs(0, sampleHeight / 2));
  for (int i = 0; i < 40; i++) viewer.key(VK_RIGHT);
  EXPECT_TRUE(cornerIs(sampleWidth - 1, sampleHeight / 2));
}

TEST_F(Viewing, AdjustsWhatIsSeenAndNotThePicture) {
  const ViewerDriver viewer(quoted("in.bmp"));
  ASSERT_TRUE(viewer.soon([&] { return shows(viewer, sampleModel()); }));
  viewer.command(ID_ADJUST);
  HWND bar = nullptr;
  for (HWND child = GetWindow(viewer.window(), GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
    if (GetDlgItem(child, IDC_INTENSITY) != nullptr) bar = child;
  ASSERT_TRUE(IsWindowVisible(bar));
  struct {
    int slider;
    int position;
    int(ZAVO_CALL* set)(int);
    int value;
    int neutral;
  } const cases[] = {
      {IDC_INTENSITY, 300, Zv_SetPaintIntensity, 300, 0},
      {IDC_CONTRAST, -400, Zv_SetPaintContrast, -400, 0},
      {IDC_GAMMA, 50, Zv_SetPaintGamma, 200, 100},
  };
  for (const auto& step : cases) {
    SCOPED_TRACE(step.slider);
    SendDlgItemMessageW(bar, step.slider, TBM_SETPOS, TRUE, step.position);
    SendMessageW(bar, WM_HSCROLL, SB_ENDSCROLL, reinterpret_cast<LPARAM>(GetDlgItem(bar, step.slider)));
    step.set(step.value);
    const Model expected = painted();
    step.set(step.neutral);
    EXPECT_NE(sampleModel().colors, expected.colors);
    EXPECT_TRUE(viewer.soon([&] { return shows(viewer, expected); }));
    viewer.command(ID_RESET_ADJUST);
    EXPECT_TRUE(viewer.soon([&] { return shows(viewer, sampleModel()); }));
  }
  EXPECT_EQ("in.bmp - zavoview", viewer.title()) << "the picture counts as changed";
}

TEST_F(Viewing, PlaysAnimations) {
  // A blue ground; a red square with a hole, taken away again; a green corner, which goes back to what was there.
  const std::vector<uint32_t> palette = {0x2040C0, 0xD02020, 0x20B040, 0xFF00FF};
  GifFrame ground{0, 0, 40, 30, std::vector<unsigned char>(40 * 30, 0), 3};
  GifFrame square{10, 5, 4, 4, std::vector<unsigned char>(16, 1), 3, 2, 3};
  square.indexes[5] = 3;
  GifFrame corner{30, 20, 10, 10, std::vector<unsigned char>(100, 2), 3, 3};
  writeGif(file("in.gif"), 40, 30, palette, {ground, square, corner});

  const auto expected = [&](int frame) {
    return makeModel(40, 30, [&](int x, int y) -> uint32_t {
      const bool inSquare = x >= 10 && x < 14 && y >= 5 && y < 9;
      if (frame == 1 && inSquare && !(x == 11 && y == 6)) return palette[1];
      if (frame == 2 && inSquare) return 0xFFFFFF;
      if (frame == 2 && x >= 30 && y >= 20) return palette[2];
      return palette[0];
    });
  };
  const ViewerDriver viewer(quoted("in.gif"));
  std::vector<std::string> told;
  const bool playing = viewer.soon([&] {
    const std::string text = viewer.status(MessagePart);
    if (text.starts_with("Frame ") && std::ranges::find(told, text) == told.end()) told.push_back(text);
    return told.size() == 3;
  });
  EXPECT_TRUE(playing) << told.size() << " frames were told";

  viewer.command(ID_FIRST_FRAME);
  for (int frame = 0; frame < 3; frame++) {
    EXPECT_EQ("Frame " + std::to_string(frame + 1) + " of 3", viewer.status(MessagePart));
    EXPECT_TRUE(viewer.soon([&] { return shows(viewer, expected(frame)); })) << frame;
    viewer.command(ID_NEXT_FRAME);
  }
}

TEST_F(Viewing, AsksBeforeChangesAreLost) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  viewer.command(ID_FLIP);
  EXPECT_EQ("*in.bmp - zavoview", viewer.title());
  HWND box = viewer.dialogOf(ID_EXIT);
  EXPECT_EQ("Save the changes of in.bmp?", viewer.messageOf(box));
  viewer.press(box, IDCANCEL);
  EXPECT_EQ("*in.bmp - zavoview", viewer.title());
  box = viewer.dialogOf(ID_EXIT);
  PostMessageW(box, WM_COMMAND, IDYES, 0);
  EXPECT_EQ(0u, viewer.exitCode());
  const Model model = sampleModel();
  const BmpFile bmp = readBmp(file("in.bmp"));
  EXPECT_EQ(model.at(3, sampleHeight - 1), bmp.colors[3]) << "the flipped picture was saved";
}

}  // namespace
