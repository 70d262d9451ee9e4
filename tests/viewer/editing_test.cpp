// Changing the picture: turning, selecting, filling, the clipboard, fewer colours. The saved file is compared with a
// plain model of what the user did.
#include <zavo.h>

#include <algorithm>
#include <set>

#include "viewer/viewer_fixture.h"

namespace {

class Editing : public ViewerTest {
 protected:
  static constexpr uint32_t fillColor = 0xC83C28;

  /// The sample with the pixels filled that are not 0 in `chosen`.
  static Model filled(const Model& chosen, uint32_t color = fillColor) {
    return makeModel(sampleWidth, sampleHeight,
                     [&](int x, int y) { return chosen.at(x, y) != 0 ? color : sampleColor(sample, x, y); });
  }
};

TEST_F(Editing, TurnsAndUndoesAndStopsAtEsc) {
  const struct {
    int command;
    uint32_t (*rule)(const Model& original, int x, int y);
  } cases[] = {
      {ID_ROTATE_RIGHT, [](const Model& m, int x, int y) { return m.at(y, m.height - 1 - x); }},
      {ID_ROTATE_LEFT, [](const Model& m, int x, int y) { return m.at(m.width - 1 - y, x); }},
      {ID_ROTATE_HALF, [](const Model& m, int x, int y) { return m.at(m.width - 1 - x, m.height - 1 - y); }},
      {ID_FLIP, [](const Model& m, int x, int y) { return m.at(x, m.height - 1 - y); }},
      {ID_MIRROR, [](const Model& m, int x, int y) { return m.at(m.width - 1 - x, y); }},
      {ID_GRAYSCALE,
       [](const Model& m, int x, int y) {
         const uint32_t color = m.at(x, y);
         return (2 * (color >> 16) + 5 * (color >> 8 & 255) + (color & 255) + 4) / 8 * 0x010101;
       }},
  };
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  const Model original = sampleModel();
  for (const auto& [command, rule] : cases) {
    SCOPED_TRACE(command);
    const bool turned = command == ID_ROTATE_RIGHT || command == ID_ROTATE_LEFT;
    viewer.command(command);
    EXPECT_EQ("*in.bmp - zavoview", viewer.title());
    EXPECT_EQ(makeModel(turned ? original.height : original.width, turned ? original.width : original.height,
                        [&](int x, int y) { return rule(original, x, y); }),
              saved(viewer));
    EXPECT_EQ("in.bmp - zavoview", viewer.title());
    viewer.command(ID_UNDO);
    EXPECT_EQ(original, saved(viewer));
  }
  for (const int id : {ID_GRAYSCALE, ID_FLIP, ID_ROTATE_RIGHT, ID_HALFTONE_DISPERSED}) {
    SCOPED_TRACE(id);
    viewer.commandAndKey(id, VK_ESCAPE);
    EXPECT_EQ("Stopped", viewer.status(MessagePart));
    EXPECT_EQ("in.bmp - zavoview", viewer.title());
    EXPECT_EQ(original, saved(viewer));
  }
}

TEST_F(Editing, CombinesShapes) {
  constexpr auto set = [](bool, bool shape) { return shape; };
  constexpr auto add = [](bool before, bool shape) { return before || shape; };
  constexpr auto exclusive = [](bool before, bool shape) { return before != shape; };
  const struct {
    RECT box;
    WPARAM keys;
    int menuMode;
    bool (*join)(bool before, bool shape);
  } steps[] = {
      {{1, 1, 20, 7}, MK_SHIFT, ID_MODE_SET, set},  // nothing to add to yet
      {{10, 3, 30, 10}, MK_SHIFT, ID_MODE_SET, add},
      {{5, 0, 15, 5}, MK_CONTROL, ID_MODE_SET, exclusive},
      {{12, 4, 14, 9}, 0, ID_MODE_SUBTRACT, [](bool before, bool shape) { return before && !shape; }},
      {{-9, 2, 28, 99}, 0, ID_MODE_INTERSECT, [](bool before, bool shape) { return before && shape; }},
      {{20, 0, 37, 11}, 0, ID_MODE_XOR, exclusive},
      {{0, 9, 2, 11}, 0, ID_MODE_ADD, add},
      {{3, 3, 9, 8}, 0, ID_MODE_SET, set},
  };
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  Model selected(sampleWidth, sampleHeight);
  for (const auto& step : steps) {
    SCOPED_TRACE(&step - steps);
    viewer.command(step.menuMode);
    viewer.drag(samplePoint(viewer, step.box.right - 1, step.box.top),
                samplePoint(viewer, step.box.left, step.box.bottom - 1), step.keys);
    RECT bounds{};
    for (LONG y = 0; y < sampleHeight; y++) {
      for (LONG x = 0; x < sampleWidth; x++) {
        uint32_t& pixel = selected.at(x, y);
        pixel = step.join(pixel != 0, PtInRect(&step.box, {x, y}) != FALSE) ? 1 : 0;
        const RECT place{x, y, x + 1, y + 1};
        if (pixel != 0) UnionRect(&bounds, &bounds, &place);
      }
    }
    EXPECT_EQ(std::to_string(bounds.left) + ", " + std::to_string(bounds.top) + ": " +
                  std::to_string(bounds.right - bounds.left) + " x " + std::to_string(bounds.bottom - bounds.top),
              viewer.status(SelectionPart));
    viewer.command(ID_FILL);
    EXPECT_EQ(filled(selected), saved(viewer));
    viewer.command(ID_UNDO);
  }
  viewer.command(ID_INVERT_SELECTION);
  viewer.command(ID_CLEAR);
  for (uint32_t& pixel : selected.pixels) pixel ^= 1;
  EXPECT_EQ(filled(selected, 0xFFFFFF), saved(viewer));
  viewer.click(samplePoint(viewer, 1, 1));
  EXPECT_EQ("", viewer.status(SelectionPart)) << "a click takes the selection away";
}

TEST_F(Editing, SelectsEllipsesPolygonsAndColours) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  // Fills, looks which of these pixels are filled, and undoes it.
  const auto expectFilled = [&](const std::vector<POINT>& inside, const std::vector<POINT>& outside) {
    viewer.command(ID_FILL);
    const Model model = saved(viewer);
    for (const POINT& at : inside) EXPECT_EQ(fillColor, model.at(at.x, at.y)) << at.x << ", " << at.y;
    for (const POINT& at : outside) EXPECT_NE(fillColor, model.at(at.x, at.y)) << at.x << ", " << at.y;
    viewer.command(ID_UNDO);
  };
  viewer.command(ID_TOOL_ELLIPSE);
  viewer.drag(samplePoint(viewer, 4, 1), samplePoint(viewer, 18, 9));
  EXPECT_EQ("4, 1: 15 x 9", viewer.status(SelectionPart));
  expectFilled({{11, 5}, {11, 1}}, {{4, 1}, {18, 1}, {4, 9}, {18, 9}});

  viewer.command(ID_TOOL_POLYGON);
  viewer.click(samplePoint(viewer, 2, 1));
  viewer.click(samplePoint(viewer, 22, 1));
  viewer.doubleClick(samplePoint(viewer, 2, 10));
  expectFilled({{3, 2}, {18, 1}}, {{18, 6}});

  viewer.click(samplePoint(viewer, 2, 1));
  viewer.command(ID_CANCEL);
  EXPECT_NE("", viewer.status(SelectionPart)) << "Esc gives up the polygon first";
  viewer.key(VK_ESCAPE);
  expectSoon(viewer, SelectionPart, "");

  viewer.command(ID_TOOL_RECTANGLE);
  viewer.drag(samplePoint(viewer, 30, 2), samplePoint(viewer, 35, 8));
  viewer.command(ID_FILL);
  viewer.command(ID_DESELECT);
  viewer.command(ID_TOOL_COLOR);
  viewer.click(samplePoint(viewer, 32, 4));
  EXPECT_EQ("30, 2: 6 x 7", viewer.status(SelectionPart));
}

TEST_F(Editing, FramesTheSelectionWithMarchingStripes) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  viewer.drag(samplePoint(viewer, 5, 2), samplePoint(viewer, 25, 8));
  const POINT left = samplePoint(viewer, 5, 2), inside = samplePoint(viewer, 15, 5);
  std::set<std::vector<uint32_t>> edges;
  EXPECT_TRUE(viewer.soon([&] {
    const Model screen = viewer.seen();
    EXPECT_EQ(sampleColor(sample, 15, 5), screen.at(inside.x, inside.y));
    std::vector<uint32_t> edge;
    for (int x = 0; x <= 20; x++) edge.push_back(screen.at(left.x + x, left.y));
    const auto black = std::ranges::count(edge, 0u), white = std::ranges::count(edge, 0xFFFFFFu);
    if (black > 4 && black + white == 21) edges.insert(edge);
    return edges.size() >= 4;
  })) << edges.size()
      << " positions of the stripes were seen";
}

TEST_F(Editing, CopiesAndPastesWhatIsSelected) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  // A box without its middle travels to another place.
  viewer.drag(samplePoint(viewer, 2, 1), samplePoint(viewer, 9, 6));
  viewer.command(ID_MODE_SUBTRACT);
  viewer.drag(samplePoint(viewer, 4, 3), samplePoint(viewer, 6, 4));
  viewer.command(ID_MODE_SET);
  viewer.command(ID_COPY);
  zavotest::TestBitmap copied;
  ASSERT_EQ(1, Zv_CopyFromClipboard(nullptr, &copied)) << "another program sees the picture";
  EXPECT_EQ(8, copied.Width);
  EXPECT_EQ(6, copied.Height);
  unsigned area = 0;
  EXPECT_EQ(KSUCCESS, Zv_GetBitmapRgnArea(&copied, &area));
  EXPECT_EQ(8u * 6 - 3 * 2, area) << "with its selection";

  viewer.drag(samplePoint(viewer, 20, 4), samplePoint(viewer, 21, 5));
  viewer.command(ID_PASTE);
  EXPECT_EQ("20, 4: 8 x 6", viewer.status(SelectionPart));
  Model expected = sampleModel();
  for (int y = 1; y <= 6; y++)
    for (int x = 2; x <= 9; x++)
      if (x < 4 || x > 6 || y < 3 || y > 4) expected.at(x + 18, y + 3) = sampleColor(sample, x, y);
  EXPECT_EQ(expected, saved(viewer));

  viewer.command(ID_PASTE_NEW);
  EXPECT_EQ("Pasted picture - zavoview", viewer.title());
  EXPECT_EQ("8 x 6, 24 bits", viewer.status(PicturePart));
}

TEST_F(Editing, CropsReducesAndResizesUnderAnotherName) {
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  viewer.drag(samplePoint(viewer, 3, 2), samplePoint(viewer, 20, 9));
  viewer.command(ID_CROP);
  EXPECT_EQ("18 x 8, 24 bits", viewer.status(PicturePart));
  HWND dialog = viewer.dialogOf(ID_SAVE_AS);
  SendDlgItemMessageA(dialog, 0x47C, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file("cut.bmp").c_str()));
  viewer.press(dialog, IDOK);
  EXPECT_TRUE(viewer.soon([&] { return viewer.title() == "cut.bmp - zavoview"; })) << viewer.title();
  EXPECT_EQ(makeModel(18, 8, [](int x, int y) { return sampleColor(sample, x + 3, y + 2); }), read("cut.bmp"));
  EXPECT_EQ(sampleModel(), read("in.bmp"));

  dialog = viewer.dialogOf(ID_REDUCE_COLORS);
  SetDlgItemInt(dialog, IDC_COLOR_COUNT, 5, FALSE);
  viewer.press(dialog, IDOK);
  expectSoon(viewer, PicturePart, "18 x 8, 3 bits");
  const Model few = saved(viewer, "cut.bmp");
  EXPECT_EQ(5u, std::set<uint32_t>(few.pixels.begin(), few.pixels.end()).size());
  viewer.command(ID_HALFTONE_DISPERSED);
  EXPECT_EQ("18 x 8, 1 bit", viewer.status(PicturePart));
  viewer.command(ID_TRUE_COLOR);
  EXPECT_EQ("18 x 8, 24 bits", viewer.status(PicturePart));

  dialog = viewer.dialogOf(ID_RESIZE);
  SetDlgItemInt(dialog, IDC_WIDTH, 54, FALSE);
  EXPECT_EQ(24u, GetDlgItemInt(dialog, IDC_HEIGHT, nullptr, FALSE)) << "the proportions are kept";
  viewer.press(dialog, IDOK);
  expectSoon(viewer, PicturePart, "54 x 24, 24 bits");
}

}  // namespace
