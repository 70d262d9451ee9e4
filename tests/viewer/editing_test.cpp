// Changing the picture: turning, selecting, filling, the clipboard, fewer colours. The saved file is compared with a
// plain model of what the user did.
#include <zavo.h>

#include <set>

#include "viewer/viewer_fixture.h"

namespace {

class Editing : public ViewerTest {
 protected:
  static constexpr uint32_t fillColor = 0xC83C28;

  /// Fills the pixels of the model that a rule chooses.
  template <typename Rule>
  static Model filled(Model model, Rule chosen, uint32_t color = fillColor) {
    for (int y = 0; y < model.height; y++)
      for (int x = 0; x < model.width; x++)
        if (chosen(x, y)) model.at(x, y) = color;
    return model;
  }

  [[nodiscard]] std::string commandLine() const { return quoted("in.bmp"); }
};

TEST_F(Editing, TurnsAndUndoes) {
  const Model original = sampleModel();
  const int right = original.width - 1;
  const int bottom = original.height - 1;
  struct {
    int command;
    Model expected;
  } const cases[] = {
      {ID_ROTATE_RIGHT,
       makeModel(original.height, original.width, [&](int x, int y) { return original.at(y, bottom - x); })},
      {ID_ROTATE_LEFT,
       makeModel(original.height, original.width, [&](int x, int y) { return original.at(right - y, x); })},
      {ID_ROTATE_HALF,
       makeModel(original.width, original.height, [&](int x, int y) { return original.at(right - x, bottom - y); })},
      {ID_FLIP, makeModel(original.width, original.height, [&](int x, int y) { return original.at(x, bottom - y); })},
      {ID_MIRROR, makeModel(original.width, original.height, [&](int x, int y) { return original.at(right - x, y); })},
      {ID_GRAYSCALE, makeModel(original.width, original.height,
                               [&](int x, int y) {
                                 const uint32_t color = original.at(x, y);
                                 const uint32_t red = color >> 16;
                                 const uint32_t green = color >> 8 & 255;
                                 return (2 * red + 5 * green + (color & 255) + 4) / 8 * 0x010101;
                               })},
  };
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  for (const auto& turn : cases) {
    SCOPED_TRACE(turn.command);
    viewer.command(turn.command);
    EXPECT_EQ("*in.bmp - zavoview", viewer.title());
    expectSame(turn.expected, saved(viewer));
    EXPECT_EQ("in.bmp - zavoview", viewer.title());
    viewer.command(ID_UNDO);
    expectSame(original, saved(viewer));
  }
}

TEST_F(Editing, StopsAtEsc) {
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  for (const int id : {ID_GRAYSCALE, ID_FLIP, ID_ROTATE_RIGHT, ID_HALFTONE_DISPERSED}) {
    SCOPED_TRACE(id);
    viewer.commandAndKey(id, VK_ESCAPE);
    EXPECT_EQ("Stopped", viewer.status(MessagePart));
    EXPECT_EQ("in.bmp - zavoview", viewer.title());
    expectSame(sampleModel(), saved(viewer));
  }
}

TEST_F(Editing, CombinesShapes) {
  struct Step {
    RECT box;
    WPARAM keys;
    int menuMode;
    bool (*join)(bool before, bool shape);
  };
  const auto set = [](bool, bool shape) { return shape; };
  const auto add = [](bool before, bool shape) { return before || shape; };
  const auto subtract = [](bool before, bool shape) { return before && !shape; };
  const auto intersect = [](bool before, bool shape) { return before && shape; };
  const auto exclusive = [](bool before, bool shape) { return before != shape; };
  const Step steps[] = {
      {{1, 1, 20, 7}, MK_SHIFT, ID_MODE_SET, set},  // nothing to add to yet
      {{10, 3, 30, 10}, MK_SHIFT, ID_MODE_SET, add},
      {{5, 0, 15, 5}, MK_CONTROL, ID_MODE_SET, exclusive},
      {{12, 4, 14, 9}, 0, ID_MODE_SUBTRACT, subtract},
      {{-9, 2, 28, 99}, 0, ID_MODE_INTERSECT, intersect},
      {{20, 0, 37, 11}, 0, ID_MODE_XOR, exclusive},
      {{0, 9, 2, 11}, 0, ID_MODE_ADD, add},
      {{3, 3, 9, 8}, 0, ID_MODE_SET, set},
  };
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  std::vector<bool> selected(static_cast<size_t>(sampleWidth * sampleHeight));
  int number = 0;
  for (const Step& step : steps) {
    SCOPED_TRACE(number++);
    viewer.command(step.menuMode);
    viewer.drag(samplePoint(viewer, step.box.right - 1, step.box.top),
                samplePoint(viewer, step.box.left, step.box.bottom - 1), step.keys);
    RECT bounds{sampleWidth, sampleHeight, 0, 0};
    for (LONG y = 0; y < sampleHeight; y++) {
      for (LONG x = 0; x < sampleWidth; x++) {
        const size_t index = static_cast<size_t>(y * sampleWidth + x);
        selected[index] = step.join(selected[index], PtInRect(&step.box, {x, y}) != FALSE);
        if (!selected[index]) continue;
        bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                  std::max(bounds.bottom, y + 1)};
      }
    }
    EXPECT_EQ(std::to_string(bounds.left) + ", " + std::to_string(bounds.top) + ": " +
                  std::to_string(bounds.right - bounds.left) + " x " + std::to_string(bounds.bottom - bounds.top),
              viewer.status(SelectionPart));
    viewer.command(ID_FILL);
    expectSame(filled(sampleModel(), [&](int x, int y) { return selected[static_cast<size_t>(y * sampleWidth + x)]; }),
               saved(viewer));
    viewer.command(ID_UNDO);
  }
  viewer.command(ID_INVERT_SELECTION);
  viewer.command(ID_CLEAR);
  expectSame(
      filled(
          sampleModel(), [&](int x, int y) { return !selected[static_cast<size_t>(y * sampleWidth + x)]; }, 0xFFFFFF),
      saved(viewer));
  viewer.click(samplePoint(viewer, 1, 1));
  EXPECT_EQ("", viewer.status(SelectionPart)) << "a click takes the selection away";
}

TEST_F(Editing, SelectsEllipsesPolygonsAndColours) {
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  viewer.command(ID_TOOL_ELLIPSE);
  viewer.drag(samplePoint(viewer, 4, 1), samplePoint(viewer, 18, 9));
  EXPECT_EQ("4, 1: 15 x 9", viewer.status(SelectionPart));
  viewer.command(ID_FILL);
  Model model = saved(viewer);
  EXPECT_EQ(fillColor, model.at(11, 5)) << "the middle";
  EXPECT_EQ(fillColor, model.at(11, 1)) << "the top";
  for (const int x : {4, 18})
    for (const int y : {1, 9}) EXPECT_NE(fillColor, model.at(x, y)) << "the corners of its box";
  viewer.command(ID_UNDO);

  viewer.command(ID_TOOL_POLYGON);
  viewer.click(samplePoint(viewer, 2, 1));
  viewer.click(samplePoint(viewer, 22, 1));
  viewer.doubleClick(samplePoint(viewer, 2, 10));
  viewer.command(ID_FILL);
  model = saved(viewer);
  EXPECT_EQ(fillColor, model.at(3, 2));
  EXPECT_EQ(fillColor, model.at(18, 1));
  EXPECT_NE(fillColor, model.at(18, 6)) << "beyond the slope";
  viewer.command(ID_UNDO);

  viewer.command(ID_TOOL_POLYGON);
  viewer.click(samplePoint(viewer, 2, 1));
  viewer.command(ID_CANCEL);
  EXPECT_NE("", viewer.status(SelectionPart)) << "Esc gives up the polygon first";
  viewer.key(VK_ESCAPE);
  EXPECT_TRUE(viewer.soon([&] { return viewer.status(SelectionPart).empty(); })) << "and then the selection";

  viewer.command(ID_TOOL_RECTANGLE);
  viewer.drag(samplePoint(viewer, 30, 2), samplePoint(viewer, 35, 8));
  viewer.command(ID_FILL);
  viewer.command(ID_DESELECT);
  viewer.command(ID_TOOL_COLOR);
  viewer.click(samplePoint(viewer, 32, 4));
  EXPECT_EQ("30, 2: 6 x 7", viewer.status(SelectionPart));
}

TEST_F(Editing, FramesTheSelectionWithMarchingStripes) {
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  viewer.drag(samplePoint(viewer, 5, 2), samplePoint(viewer, 25, 8));
  std::set<std::vector<COLORREF>> pictures;
  const bool marches = viewer.soon([&] {
    const ScreenPicture screen = viewer.seen();
    std::vector<COLORREF> edge;
    for (int x = 5; x <= 25; x++) {
      const POINT point = samplePoint(viewer, x, 2);
      edge.push_back(screen.at(point.x, point.y));
    }
    const bool stripes = std::ranges::all_of(edge, [](COLORREF c) { return c == 0 || c == RGB(255, 255, 255); });
    if (stripes && std::ranges::count(edge, COLORREF{0}) > 4) pictures.insert(edge);
    return pictures.size() >= 4;
  });
  EXPECT_TRUE(marches) << pictures.size() << " positions of the stripes were seen";
  const ScreenPicture screen = viewer.seen();
  const POINT inside = samplePoint(viewer, 15, 5);
  EXPECT_EQ(sampleColor(sample, 15, 5), rgbOf(screen.at(inside.x, inside.y)));
}

TEST_F(Editing, CopiesAndPastesWhatIsSelected) {
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  // A box without its middle travels to another place.
  viewer.drag(samplePoint(viewer, 2, 1), samplePoint(viewer, 9, 6));
  viewer.command(ID_MODE_SUBTRACT);
  viewer.drag(samplePoint(viewer, 4, 3), samplePoint(viewer, 6, 4));
  viewer.command(ID_MODE_SET);
  viewer.command(ID_COPY);

  BitmapHandle copied{};
  ASSERT_EQ(1, Zv_CopyFromClipboard(nullptr, &copied)) << "another program sees the picture";
  EXPECT_EQ(8, copied.Width);
  EXPECT_EQ(6, copied.Height);
  unsigned area = 0;
  EXPECT_EQ(KSUCCESS, Zv_GetBitmapRgnArea(&copied, &area));
  EXPECT_EQ(8u * 6 - 3 * 2, area) << "with its selection";
  Zv_FreeBitmap(&copied);

  viewer.drag(samplePoint(viewer, 20, 4), samplePoint(viewer, 21, 5));
  viewer.command(ID_PASTE);
  EXPECT_EQ("20, 4: 8 x 6", viewer.status(SelectionPart));
  const Model original = sampleModel();
  Model expected = original;
  for (int y = 1; y <= 6; y++)
    for (int x = 2; x <= 9; x++)
      if (x < 4 || x > 6 || y < 3 || y > 4) expected.at(x + 18, y + 3) = original.at(x, y);
  expectSame(expected, saved(viewer));

  viewer.command(ID_PASTE_NEW);
  EXPECT_EQ("Pasted picture - zavoview", viewer.title());
  EXPECT_EQ("8 x 6, 24 bits", viewer.status(PicturePart));
}

TEST_F(Editing, CropsAndSavesUnderAnotherName) {
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  viewer.drag(samplePoint(viewer, 3, 2), samplePoint(viewer, 20, 9));
  viewer.command(ID_CROP);
  EXPECT_EQ("18 x 8, 24 bits", viewer.status(PicturePart));
  const HWND dialog = viewer.dialogOf(ID_SAVE_AS);
  SendDlgItemMessageA(dialog, 0x47C, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file("cut.bmp").c_str()));
  viewer.press(dialog, IDOK);
  EXPECT_TRUE(viewer.soon([&] { return viewer.title() == "cut.bmp - zavoview"; })) << viewer.title();
  const Model original = sampleModel();
  expectSame(makeModel(18, 8, [&](int x, int y) { return original.at(x + 3, y + 2); }), saved(viewer, "cut.bmp"));
  const BmpFile untouched = readBmp(file("in.bmp"));
  EXPECT_EQ(original.colors, untouched.colors);
}

TEST_F(Editing, ReducesColoursAndResizes) {
  const ViewerDriver viewer(commandLine());
  waitForPicture(viewer);
  HWND dialog = viewer.dialogOf(ID_REDUCE_COLORS);
  SetDlgItemInt(dialog, IDC_COLOR_COUNT, 5, FALSE);
  viewer.press(dialog, IDOK);
  EXPECT_TRUE(viewer.soon([&] { return viewer.status(PicturePart) == "37 x 11, 3 bits"; }))
      << viewer.status(PicturePart);
  const Model few = saved(viewer);
  EXPECT_EQ(5u, std::set<uint32_t>(few.colors.begin(), few.colors.end()).size());
  viewer.command(ID_HALFTONE_DISPERSED);
  EXPECT_EQ("37 x 11, 1 bit", viewer.status(PicturePart));
  viewer.command(ID_TRUE_COLOR);
  EXPECT_EQ("37 x 11, 24 bits", viewer.status(PicturePart));

  dialog = viewer.dialogOf(ID_RESIZE);
  SetDlgItemInt(dialog, IDC_WIDTH, 111, FALSE);
  EXPECT_EQ(33u, GetDlgItemInt(dialog, IDC_HEIGHT, nullptr, FALSE)) << "the proportions are kept";
  viewer.press(dialog, IDOK);
  EXPECT_TRUE(viewer.soon([&] { return viewer.status(PicturePart) == "111 x 33, 24 bits"; }))
      << viewer.status(PicturePart);
}

}  // namespace
