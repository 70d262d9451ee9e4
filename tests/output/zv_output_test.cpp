// zv's commands for the printer, the clipboard and the screen; and what a program of the Unix system beneath reads from
// the clipboard.
#include <zavo.h>

#include <thread>

#include "examples/zv_fixture.h"
#include "output/printed_page.h"
#include "output/unix_shell.h"
#include "support/screen.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

Picture samplePicture() {
  Picture picture(sampleWidth, sampleHeight);
  for (int y = 0; y < sampleHeight; ++y) {
    for (int x = 0; x < sampleWidth; ++x) picture.at(x, y) = sampleColor(sample, x, y);
  }
  return picture;
}

Picture pictureOfFile(const std::string& path) {
  BmpFile file = readBmp(path);
  Picture picture(file.width, file.height);
  picture.pixels = std::move(file.colors);
  return picture;
}

void emptyClipboard() {
  ASSERT_TRUE(OpenClipboard(nullptr));
  EmptyClipboard();
  CloseClipboard();
}

class ZvOutput : public Zv {
 protected:
  void TearDown() override {
    emptyClipboard();
    if (owner != nullptr) DestroyWindow(owner);
  }
  // Puts a bitmap on the clipboard, of which an unseen window is the owner.
  void copy(BitmapHandle& bitmap) {
    if (owner == nullptr)
      owner = CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ASSERT_EQ(Zv_CopyToClipboard(owner, &bitmap), 1);
  }

  HWND owner = nullptr;
};

TEST_F(ZvOutput, ComplainsAboutWhatCannotBePutOut) {
  emptyClipboard();
  const struct {
    const char* arguments;
    DWORD exitCode;
    const char* message;
  } cases[] = {
      {"print in.png --height 0", 2, "zv: --height takes a number from 1 to 1000000, not '0'\n"},
      {"print in.png --fast", 2, "zv: --fast needs --width and --height\n"},
      {"copy in.png --hold 86401", 2, "zv: --hold takes a number from 0 to 86400, not '86401'\n"},
      {"paste out.png", 1, "zv: there is no picture on the clipboard\n"},
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

TEST_F(ZvOutput, CopiesToOtherPrograms) {
  EXPECT_EQ(run("copy in.png --rect 3,2,20,6 --hold 0").output, "");
  TestBitmap bitmap;
  ASSERT_EQ(Zv_CopyFromClipboard(nullptr, &bitmap), 1);
  EXPECT_EQ(seenOf(bitmap), samplePicture());
  Picture selected(sampleWidth, sampleHeight);
  for (int y = 2; y < 8; ++y) {
    for (int x = 3; x < 23; ++x) selected.at(x, y) = 1;
  }
  EXPECT_EQ(seenRegionOf(bitmap), selected);
}

TEST_F(ZvOutput, HoldsTheClipboardUntilItIsTaken) {
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

TEST_F(ZvOutput, PastesFromOtherPrograms) {
  TestBitmap bitmap;
  makeSeen(bitmap, samplePicture(), 24, VIEW_TURNED_90);
  const RECT half = {0, 0, bitmap.Width, bitmap.Height / 2};  // stored rows are the picture's columns
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &half, CombineSet), KSUCCESS);
  copy(bitmap);
  EXPECT_EQ(run("paste out.bmp --write-mask mask.bmp").output, "");
  EXPECT_EQ(pictureOfFile(file("out.bmp")), samplePicture());
  Picture expected = seenRegionOf(bitmap);
  for (uint32_t& pixel : expected.pixels) pixel *= 0xFFFFFF;
  EXPECT_EQ(pictureOfFile(file("mask.bmp")), expected);
}

TEST_F(ZvOutput, CapturesTheScreen) {
  const ScreenWindow window;
  Picture expected(30, 20), captured;
  std::fill(expected.pixels.begin(), expected.pixels.end(), 0xFFFFFF);
  POINT corner = {10, 15};
  MapWindowPoints(window.handle(), nullptr, &corner, 1);
  for (int attempt = 0; attempt < 20 && captured != expected; ++attempt) {
    PatBlt(window.dc(), 0, 0, ScreenWindow::width, ScreenWindow::height, BLACKNESS);
    PatBlt(window.dc(), 10, 15, 30, 20, WHITENESS);
    GdiFlush();
    const std::string rect = std::to_string(corner.x) + "," + std::to_string(corner.y) + ",30,20";
    ASSERT_EQ(run("capture out.bmp --rect " + rect).output, "");
    captured = pictureOfFile(file("out.bmp"));
  }
  EXPECT_EQ(captured, expected);
  EXPECT_EQ(run("capture out.bmp").output, "");
  const Picture screen = pictureOfFile(file("out.bmp"));
  EXPECT_EQ(screen.width, GetSystemMetrics(SM_CXSCREEN));
  EXPECT_EQ(screen.height, GetSystemMetrics(SM_CYSCREEN));
}

TEST_F(ZvOutput, PrintsAPicture) {
  const std::string reason = whyNoPrinter();
  if (!reason.empty()) GTEST_SKIP() << reason;
  ASSERT_EQ(run("region in.png field.png --fill 0ac85a").output, "");  // of one colour
  for (const std::string fast : {"", " --fast"}) {
    SCOPED_TRACE(fast);
    EXPECT_EQ(run("print field.png --x 120 --y 240 --width 370 --height 110 --progress" + fast).output,
              fast.empty() ? "print: 0 10 20 30 40 50 60 70 80 90 100 %\n" : "");
    const PrintedPage page = takePrintedPage();
    ASSERT_EQ(page.pages, 1) << page.trouble;
    for (const POINT& inside : {POINT{121, 241}, POINT{488, 348}}) {
      EXPECT_EQ(page.picture.at(inside.x, inside.y), 0x0AC85Au);
    }
    for (const POINT& outside : {POINT{118, 300}, POINT{492, 300}, POINT{300, 238}, POINT{300, 352}}) {
      EXPECT_EQ(page.picture.at(outside.x, outside.y), 0xFFFFFFu) << outside.x << ", " << outside.y;
    }
  }
}

TEST_F(ZvOutput, TheUnixSystemReadsWhatIsCopied) {
  if (shell("command -v xclip").exitCode != 0) GTEST_SKIP() << "xclip is missing (script/bootstrap installs it)";
  Picture picture(45, 17);  // of at most 16 colours
  for (size_t i = 0; i < picture.pixels.size(); ++i) {
    picture.pixels[i] = static_cast<uint32_t>(i % 45 / 12 * 0x500000 | i / 225 * 0x5000 | 0x40);
  }
  for (const int bits : {4, 8, 24, 32}) {
    for (const int perspective : {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_270}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      TestBitmap bitmap;
      makeSeen(bitmap, picture, bits, perspective);
      copy(bitmap);
      const ShellResult read = shell("timeout 20 xclip -selection clipboard -t image/bmp -o");
      ASSERT_EQ(read.exitCode, 0) << read.output;
      std::ofstream(file("read.bmp"), std::ios::binary) << read.output;
      EXPECT_EQ(readBmp(file("read.bmp")).bitsPerPixel, bits == 32 ? 24 : bits);
      EXPECT_EQ(pictureOfFile(file("read.bmp")), picture);
    }
  }
}

}  // namespace
