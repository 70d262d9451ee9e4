// Opening, showing, zooming, adjusting and leaving.
#include <zavo.h>

#include <fstream>
// commctrl.h needs the rest of windows.h first.
#include <commctrl.h>

#include "support/canvas.h"
#include "support/seen_picture.h"
#include "viewer/gif_file.h"
#include "viewer/viewer_fixture.h"

namespace {

class Viewing : public ViewerTest {
 protected:
  /// The picture at its actual size is on the screen within some seconds, pixel for pixel.
  static bool showsSoon(const ViewerDriver& viewer, const Model& model) {
    return viewer.soon([&] { return shows(viewer, model); });
  }
  static bool shows(const ViewerDriver& viewer, const Model& model) {
    const Model screen = viewer.seen();
    const POINT corner = pointOf(viewer, {model.width, model.height}, 0, 0);
    return model == makeModel(model.width, model.height,
                              [&](int x, int y) { return screen.orZero(corner.x + x, corner.y + y); });
  }
  static bool titleIsSoon(const ViewerDriver& viewer, const std::string& title) {
    return viewer.soon([&] { return viewer.title() == title; });
  }
};

TEST_F(Viewing, OpensByCommandLineDialogAndDrop) {
  writeSample({"png", GUID_ContainerFormatPng, GUID_WICPixelFormat1bppIndexed, 1, true}, file("page.png"), 96, 96);
  const ViewerDriver viewer(quoted("in.bmp"));
  EXPECT_TRUE(titleIsSoon(viewer, "in.bmp - zavoview"));
  EXPECT_EQ("37 x 11, 24 bits", viewer.status(PicturePart));
  EXPECT_EQ("100 %", viewer.status(ScalePart));
  EXPECT_TRUE(showsSoon(viewer, sampleModel()));
  viewer.click(samplePoint(viewer, 5, 7));
  const uint32_t color = sampleColor(sample, 5, 7);
  EXPECT_EQ("5, 7", viewer.status(PositionPart));
  EXPECT_EQ("RGB " + std::to_string(color >> 16) + ", " + std::to_string(color >> 8 & 255) + ", " +
                std::to_string(color & 255),
            viewer.status(ColorPart));

  viewer.drop(file("page.png"));
  EXPECT_TRUE(titleIsSoon(viewer, "page.png - zavoview")) << viewer.title();
  EXPECT_EQ("37 x 11, 1 bit", viewer.status(PicturePart));

  const HWND dialog = viewer.dialogOf(ID_OPEN);
  SendDlgItemMessageA(dialog, 0x47C, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file("in.bmp").c_str()));
  viewer.press(dialog, IDOK);
  EXPECT_TRUE(titleIsSoon(viewer, "in.bmp - zavoview")) << viewer.title();
}

TEST_F(Viewing, SaysWhatCannotBeOpened) {
  std::ofstream(file("text.png")) << "no picture";
  const ViewerDriver empty(quoted("text.png"));
  HWND box = empty.dialog();
  EXPECT_EQ("cannot read " + file("text.png") + ": not a picture in a known format", empty.messageOf(box));
  empty.press(box, IDOK);
  for (const int id :
       {ID_SAVE, ID_ROTATE_LEFT, ID_FILL, ID_ZOOM_IN, ID_SELECT_ALL, ID_PLAY, ID_CROP, ID_UNDO, ID_CANCEL})
    empty.command(id);
  EXPECT_EQ("zavoview", empty.title()) << "commands without a picture do nothing";
}

TEST_F(Viewing, ZoomsSmoothlyOrExactlyAndScrolls) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  const std::pair<WPARAM, const char*> keys[] = {
      {VK_ADD, "150 %"},       {VK_ADD, "200 %"},      {VK_OEM_PLUS, "300 %"}, {VK_SUBTRACT, "200 %"},
      {VK_OEM_MINUS, "150 %"}, {VK_MULTIPLY, "100 %"}, {VK_SUBTRACT, "67 %"},  {VK_DIVIDE, "100 %"},
  };
  for (const auto& [key, scale] : keys) {
    viewer.key(key);
    expectSoon(viewer, ScalePart, scale);
  }
  while (viewer.status(ScalePart) != "800 %") viewer.command(ID_ZOOM_IN);
  const Model large =
      makeModel(sampleWidth * 8, sampleHeight * 8, [&](int x, int y) { return sampleColor(sample, x / 8, y / 8); });
  EXPECT_FALSE(shows(viewer, large)) << "scaling is smooth at first";
  viewer.command(ID_SMOOTH);
  EXPECT_TRUE(showsSoon(viewer, large));

  while (viewer.status(ScalePart) != "3200 %") viewer.command(ID_ZOOM_IN);
  for (const bool right : {false, true}) {
    if (!right) SendMessageW(viewer.canvas(), WM_HSCROLL, SB_TOP, 0);
    for (int i = 0; i < 40 && right; i++) viewer.key(VK_RIGHT);
    EXPECT_TRUE(viewer.soon([&] {
      const Model screen = viewer.seen();
      return screen.at(right ? screen.width - 1 : 0, screen.height / 2) ==
             sampleColor(sample, right ? sampleWidth - 1 : 0, sampleHeight / 2);
    })) << (right ? "right" : "left");
  }
}

TEST_F(Viewing, KnowsTheUsualKeys) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  ASSERT_TRUE(viewer.bringToFront());
  const struct {
    BYTE key;
    StatusPart part;
    const char* text;
  } keys[] = {{'A', SelectionPart, "0, 0: 37 x 11"},
              {'D', SelectionPart, ""},
              {'R', PicturePart, "11 x 37, 24 bits"},
              {'Z', PicturePart, "37 x 11, 24 bits"}};
  for (const auto& [key, part, text] : keys) {
    viewer.typeKey(key, {VK_CONTROL});
    expectSoon(viewer, part, text);
  }
  // Alt takes away from the selection, and letting go of it does not open the menu.
  EXPECT_TRUE(viewer.soon([&] {
    viewer.command(ID_SELECT_ALL);
    viewer.hold(VK_MENU, true);
    viewer.drag(samplePoint(viewer, 0, 0), samplePoint(viewer, 9, 10));
    viewer.hold(VK_MENU, false);
    return viewer.status(SelectionPart) == "10, 0: 27 x 11";
  }));
  viewer.typeKey('D', {VK_CONTROL});
  expectSoon(viewer, SelectionPart, "");
  // Menus open by their letters: Picture, Mirror.
  viewer.typeKey('P', {VK_MENU});
  viewer.typeKey('M', {});
  EXPECT_TRUE(viewer.soon([&] { return saved(viewer).at(0, 0) == sampleModel().at(sampleWidth - 1, 0); }));
}

TEST_F(Viewing, AdjustsWhatIsSeenAndNotThePicture) {
  const ViewerDriver viewer(quoted("in.bmp"));
  ASSERT_TRUE(showsSoon(viewer, sampleModel()));
  viewer.command(ID_ADJUST);
  const HWND bar = viewer.parentOf(IDC_INTENSITY);
  ASSERT_TRUE(IsWindowVisible(bar));
  const struct {
    int slider, position;
    int values[3];  // of the library
  } cases[] = {{IDC_INTENSITY, 300, {300, 0, 100}}, {IDC_CONTRAST, -400, {0, -400, 100}}, {IDC_GAMMA, 50, {0, 0, 200}}};
  zavotest::TestBitmap bitmap;
  zavotest::makeSeen(bitmap, sampleModel(), 24, VIEW_UPRIGHT);
  const RECT whole{0, 0, sampleWidth, sampleHeight};
  for (const auto& [slider, position, values] : cases) {
    SCOPED_TRACE(slider);
    SendDlgItemMessageW(bar, slider, TBM_SETPOS, TRUE, position);
    SendMessageW(bar, WM_HSCROLL, SB_ENDSCROLL, reinterpret_cast<LPARAM>(GetDlgItem(bar, slider)));
    const zavotest::Canvas canvas(sampleWidth, sampleHeight);
    const zavotest::PaintSettings settings;
    zavotest::PaintSettings::adjust(values[0], values[1], values[2]);
    EXPECT_EQ(KSUCCESS, Zv_PaintDC(canvas.dc(), &bitmap, nullptr, nullptr, &whole, nullptr, SRCCOPY));
    EXPECT_NE(sampleModel(), canvas.picture());
    EXPECT_TRUE(showsSoon(viewer, canvas.picture()));
    viewer.command(ID_RESET_ADJUST);
    EXPECT_TRUE(showsSoon(viewer, sampleModel()));
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
  for (int frame = 1; frame <= 3; frame++) expectSoon(viewer, MessagePart, "Frame " + std::to_string(frame) + " of 3");
  viewer.command(ID_FIRST_FRAME);
  for (int frame = 0; frame < 3; frame++) {
    EXPECT_EQ("Frame " + std::to_string(frame + 1) + " of 3", viewer.status(MessagePart));
    EXPECT_TRUE(showsSoon(viewer, expected(frame))) << frame;
    viewer.command(ID_NEXT_FRAME);
  }
}

TEST_F(Viewing, AsksBeforeChangesAreLost) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  viewer.command(ID_FLIP);
  HWND box = viewer.dialogOf(ID_EXIT);
  EXPECT_EQ("Save the changes of in.bmp?", viewer.messageOf(box));
  viewer.press(box, IDCANCEL);
  EXPECT_EQ("*in.bmp - zavoview", viewer.title());
  PostMessageW(viewer.dialogOf(ID_EXIT), WM_COMMAND, IDYES, 0);
  EXPECT_EQ(0u, viewer.exitCode());
  EXPECT_EQ(sampleModel().at(3, sampleHeight - 1), read("in.bmp").at(3, 0)) << "the flipped picture was saved";
}

}  // namespace
