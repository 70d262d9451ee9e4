// Printing from the window, on the printer that script/printer makes.
#include "output/printed_page.h"
#include "viewer/viewer_fixture.h"

namespace {

using zavotest::PrintedPage;

class Printing : public ViewerTest {};

TEST_F(Printing, PrintsOnePageWithTheNameOfTheFileUnlessTheUserCancels) {
  const std::string reason = zavotest::whyNoPrinter();
  if (!reason.empty()) GTEST_SKIP() << reason;
  const ViewerDriver viewer(quoted("in.bmp"));
  waitForPicture(viewer);
  for (const bool cancel : {true, false}) {
    PostMessageW(viewer.dialogOf(ID_PRINT), WM_COMMAND, IDOK, 0);
    HWND progress = nullptr;
    EXPECT_TRUE(viewer.soon([&] { return (progress = FindWindowW(L"#32770", L"Printing")) != nullptr; }));
    EXPECT_FALSE(IsWindowEnabled(viewer.window())) << "the picture could be changed while it is printed";
    if (cancel) viewer.press(progress, IDCANCEL);
    EXPECT_TRUE(viewer.soon([&] { return !IsWindow(progress) && IsWindowEnabled(viewer.window()); }));
    EXPECT_EQ("in.bmp - zavoview", viewer.title());
    EXPECT_TRUE(!cancel || zavotest::takePrintedPage().pages == 0);
  }
  const PrintedPage page = zavotest::takePrintedPage();
  ASSERT_EQ(1, page.pages) << page.trouble;
  EXPECT_EQ("in.bmp", page.title);
  // As wide as the page, in the middle of its height.
  const int height = MulDiv(page.picture.width, sampleHeight, sampleWidth);
  const int top = (page.picture.height - height) / 2;
  for (const POINT pixel : {POINT{1, 1}, POINT{18, 5}, POINT{35, 9}}) {
    const uint32_t printed = page.picture.at((2 * pixel.x + 1) * page.picture.width / (2 * sampleWidth),
                                             top + (2 * pixel.y + 1) * height / (2 * sampleHeight));
    const uint32_t expected = sampleColor(sample, pixel.x, pixel.y);
    for (int shift = 0; shift < 24; shift += 8)
      EXPECT_NEAR(static_cast<int>(expected >> shift & 255), static_cast<int>(printed >> shift & 255), 8)
          << pixel.x << ", " << pixel.y;
  }
}

}  // namespace
