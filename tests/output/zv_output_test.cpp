// zv's commands for the printer, the clipboard and the screen.
#include <zavo.h>

#include <thread>

#include "examples/zv_fixture.h"
#include "output/printed_page.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

constexpr COLORREF shownColor = RGB(10, 200, 90);

// The sample picture in.png as the library sees colours.
Picture samplePicture() {
  Picture picture(sampleWidth, sampleHeight);
  for (int y = 0; y < sampleHeight; ++y) {
    for (int x = 0; x < sampleWidth; ++x) picture.at(x, y) = sampleColor(sample, x, y);
  }
  return picture;
}

Picture pictureOfFile(const BmpFile& file) {
  Picture picture(file.width, file.height);
  picture.pixels = file.colors;
  return picture;
}

void emptyClipboard() {
  ASSERT_TRUE(OpenClipboard(nullptr));
  EmptyClipboard();
  CloseClipboard();
}

TEST_F(Zv, ComplainsAboutWhatCannotBePutOut) {
  emptyClipboard();
  struct {
    const char* arguments;
    DWORD exitCode;
    const char* message;
  } const cases[] = {
      {"print", 2, "zv: the picture is missing\n"},
      {"print none.png", 1, "zv: cannot read none.png: no such file\n"},
      {"print in.png --height 0", 2, "zv: --height takes a number from 1 to 1000000, not '0'\n"},
      {"print in.png --fast", 2, "zv: --fast needs --width and --height\n"},
      {"print in.png --slow", 2, "zv: unknown option --slow (zv print --help lists them)\n"},
      {"copy", 2, "zv: the picture is missing\n"},
      {"copy in.png --hold", 2, "zv: --hold needs a value\n"},
      {"copy in.png --hold 86401", 2, "zv: --hold takes a number from 0 to 86400, not '86401'\n"},
      {"copy in.png --wait", 2, "zv: unknown option --wait (zv copy --help lists them)\n"},
      {"paste out.png", 1, "zv: there is no picture on the clipboard\n"},
      {"paste out.gif", 2, "zv: cannot write out.gif: the name must end in .png or .bmp\n"},
      {"capture out.png --rect 1,2,3", 2,
       "zv: --rect takes at least 4 whole numbers with commas between, not '1,2,3'\n"},
      {"capture out.png --rect 5,5,0,5", 2, "zv: --rect takes a part of the screen (X,Y,W,H), not '5,5,0,5'\n"},
      {"capture out.png --rect 2147483647,0,2147483647,9", 2,
       "zv: --rect takes a part of the screen (X,Y,W,H), not '2147483647,0,2147483647,9'\n"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.arguments);
    const RunResult result = run(expected.arguments);
    EXPECT_EQ(expected.exitCode, result.exitCode);
    EXPECT_EQ(expected.message, result.output);
  }
}

TEST_F(Zv, CopiesToOtherPrograms) {
  const RunResult result = run("copy in.png --rect 3,2,20,6 --hold 0");
  ASSERT_EQ(0u, result.exitCode) << result.output;
  TestBitmap bitmap;
  ASSERT_EQ(Zv_CopyFromClipboard(nullptr, &bitmap), 1);
  EXPECT_EQ(seenOf(bitmap), samplePicture());
  const Picture selected = seenRegionOf(bitmap);
  for (int y = 0; y < sampleHeight; ++y) {
    for (int x = 0; x < sampleWidth; ++x) {
      ASSERT_EQ(selected.at(x, y), x >= 3 && x < 23 && y >= 2 && y < 8 ? 1u : 0u) << x << ", " << y;
    }
  }
}

TEST_F(Zv, HoldsTheClipboardUntilItIsTaken) {
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(run("copy in.png --hold 1").exitCode, 0u);
  EXPECT_GE(GetTickCount64() - start, 1000u);
  emptyClipboard();
  std::thread taker([] {
    for (int i = 0; i < 1000 && Zv_ClipboardReady() == 0; ++i) Sleep(10);
    emptyClipboard();
  });
  const ULONGLONG again = GetTickCount64();
  EXPECT_EQ(run("copy in.png --hold 60").exitCode, 0u);
  EXPECT_LT(GetTickCount64() - again, 50000u);
  taker.join();
}

TEST_F(Zv, PastesFromOtherPrograms) {
  TestBitmap bitmap;
  makeSeen(bitmap, samplePicture(), 24, VIEW_TURNED_90);
  const RECT half = {0, 0, bitmap.Width, bitmap.Height / 2};  // stored rows are the picture's columns
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &half, CombineSet), KSUCCESS);
  HWND window = CreateWindowExA(0, "STATIC", "owner", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
  ASSERT_EQ(Zv_CopyToClipboard(window, &bitmap), 1);
  const RunResult result = run("paste out.bmp --write-mask mask.bmp");
  ASSERT_EQ(0u, result.exitCode) << result.output;
  EXPECT_EQ(pictureOfFile(readBmp(file("out.bmp"))), samplePicture());
  const Picture mask = pictureOfFile(readBmp(file("mask.bmp")));
  Picture expected = seenRegionOf(bitmap);
  for (uint32_t& pixel : expected.pixels) pixel *= 0xFFFFFF;
  EXPECT_EQ(mask, expected);
  DestroyWindow(window);
}

TEST_F(Zv, CapturesTheScreen) {
  HWND window = CreateWindowExA(WS_EX_TOPMOST, "STATIC", "shown", WS_POPUP | WS_VISIBLE, 50, 60, 80, 40, nullptr,
                                nullptr, nullptr, nullptr);
  HDC dc = GetDC(window);
  HBRUSH brush = CreateSolidBrush(shownColor);
  const RECT all = {0, 0, 80, 40};
  MSG message;
  Picture captured;
  for (int attempt = 0; attempt < 20; ++attempt) {
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    FillRect(dc, &all, brush);
    GdiFlush();
    ASSERT_EQ(run("capture out.bmp --rect 60,70,30,20").output, "");
    captured = pictureOfFile(readBmp(file("out.bmp")));
    if (captured.at(0, 0) == 0x0AC85A) break;
  }
  Picture expected(30, 20);
  for (uint32_t& pixel : expected.pixels) pixel = 0x0AC85A;
  EXPECT_EQ(captured, expected);
  EXPECT_EQ(run("capture out.bmp").output, "");
  const BmpFile screen = readBmp(file("out.bmp"));
  EXPECT_EQ(screen.width, GetSystemMetrics(SM_CXSCREEN));
  EXPECT_EQ(screen.height, GetSystemMetrics(SM_CYSCREEN));
  DeleteObject(brush);
  ReleaseDC(window, dc);
  DestroyWindow(window);
}

TEST_F(Zv, PrintsAPicture) {
  const std::string reason = whyNoPrinter();
  if (!reason.empty()) GTEST_SKIP() << reason;
  for (const std::string fast : {"", " --fast"}) {
    SCOPED_TRACE(fast);
    // A field of one colour.
    ASSERT_EQ(run("region in.png field.png --fill 0ac85a").output, "");
    const RunResult result = run("print field.png --x 120 --y 240 --width 370 --height 110 --progress" + fast);
    ASSERT_EQ(0u, result.exitCode) << result.output;
    EXPECT_EQ(result.output, fast.empty() ? "print: 0 10 20 30 40 50 60 70 80 90 100 %\n" : "");
    const PrintedPage page = takePrintedPage();
    ASSERT_EQ(page.pages, 1) << page.trouble;
    EXPECT_EQ(page.picture.at(121, 241), 0x0AC85Au);
    EXPECT_EQ(page.picture.at(488, 348), 0x0AC85Au);
    EXPECT_EQ(page.picture.at(118, 300), 0xFFFFFFu);
    EXPECT_EQ(page.picture.at(492, 300), 0xFFFFFFu);
    EXPECT_EQ(page.picture.at(300, 238), 0xFFFFFFu);
    EXPECT_EQ(page.picture.at(300, 352), 0xFFFFFFu);
  }
}

}  // namespace
