// The clipboard between this program and another one, of the Unix system beneath.
#include <zavo.h>

#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "color/dib_samples.h"
#include "output/unix_shell.h"
#include "support/seen_picture.h"

namespace {

using namespace zavotest;

constexpr unsigned fileHeaderBytes = sizeof(BITMAPFILEHEADER);

Bytes readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class ClipboardPrograms : public testing::Test {
 protected:
  void SetUp() override {
    if (shell("command -v xclip").exitCode != 0) GTEST_SKIP() << "xclip is missing (script/bootstrap installs it)";
    window = CreateWindowExA(0, "STATIC", "owner", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
  }
  void TearDown() override {
    if (window == nullptr) return;
    if (OpenClipboard(window)) {
      EmptyClipboard();
      CloseClipboard();
    }
    DestroyWindow(window);
  }

  HWND window = nullptr;
  ScratchFolder folder;
};

Picture colorfulPicture() {
  Picture picture(45, 17);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      // At most 16 colours, so that it fits every depth from 4 bits.
      picture.at(x, y) = static_cast<uint32_t>((x / 12) * 0x500000 | (y / 5) * 0x5000 | 0x40);
    }
  }
  return picture;
}

TEST_F(ClipboardPrograms, AnotherProgramReadsOurs) {
  for (const int bits : {4, 8, 24, 32}) {
    for (const int perspective : {VIEW_UPRIGHT, VIEW_BOTTOM_UP, VIEW_TURNED_270}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, perspective " << perspective);
      TestBitmap bitmap;
      makeSeen(bitmap, colorfulPicture(), bits, perspective);
      ASSERT_EQ(Zv_CopyToClipboard(window, &bitmap), 1);
      const ShellResult read =
          shell("timeout 20 xclip -selection clipboard -t image/bmp -o >'" + folder.unixFile("read.bmp") + "'");
      ASSERT_EQ(read.exitCode, 0) << read.output;
      const Bytes file = readFile(folder.file("read.bmp"));
      ASSERT_GT(file.size(), fileHeaderBytes + 40);
      EXPECT_EQ(std::string(file.begin(), file.begin() + 2), "BM");
      // The file's own words say where its pixels are; nothing of the library reads them here.
      const auto word = [&](size_t at) {
        int32_t value = 0;
        memcpy(&value, file.data() + at, sizeof value);
        return value;
      };
      ASSERT_EQ(word(18), 45);
      ASSERT_EQ(word(22), 17);
      const int fileBits = word(28) & 0xFFFF;
      ASSERT_EQ(fileBits, bits == 32 ? 24 : bits);
      const auto firstRow = static_cast<size_t>(word(10));
      const size_t rowBytes = (45 * static_cast<size_t>(fileBits) + 31) / 32 * 4;
      ASSERT_GE(file.size(), firstRow + 17 * rowBytes);
      Picture seen(45, 17);
      for (int y = 0; y < 17; ++y) {
        const uint8_t* row = file.data() + firstRow + static_cast<size_t>(16 - y) * rowBytes;
        for (int x = 0; x < 45; ++x) {
          const uint8_t* color = row + x * 3;
          if (fileBits <= 8) {
            const int index = fileBits == 8 ? row[x] : row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15;
            color = file.data() + 54 + index * 4;
          }
          seen.at(x, y) = static_cast<uint32_t>(color[2] << 16 | color[1] << 8 | color[0]);
        }
      }
      EXPECT_EQ(seen, colorfulPicture());
    }
  }
}

TEST_F(ClipboardPrograms, WeReadAnothersPicture) {
  for (const DibSpec& layout :
       {DibSpec{.width = 43, .height = 17, .bits = 24}, DibSpec{.width = 33, .height = 9, .bits = 8},
        DibSpec{.width = 31, .height = 5, .bits = 4}, DibSpec{.width = 13, .height = 21, .bits = 1}}) {
    SCOPED_TRACE(testing::Message() << layout.bits << " bits");
    const Bytes dib = packedDib(layout, 5);
    BITMAPFILEHEADER header{};
    header.bfType = 0x4D42;
    header.bfOffBits = fileHeaderBytes + 40 + layout.colors() * 4;
    header.bfSize = static_cast<DWORD>(fileHeaderBytes + dib.size());
    Bytes file;
    put(file, header);
    file.insert(file.end(), dib.begin(), dib.end());
    std::ofstream(folder.file("offered.bmp"), std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    const ShellResult offered =
        shell("xclip -selection clipboard -t image/bmp -i '" + folder.unixFile("offered.bmp") + "' >/dev/null 2>&1");
    ASSERT_EQ(offered.exitCode, 0) << offered.output;
    TestBitmap bitmap;
    int read = 0;
    // The system hears of the new owner a moment later.
    for (const ULONGLONG start = GetTickCount64(); read == 0 && GetTickCount64() - start < 10000; Sleep(50)) {
      if (Zv_ClipboardReady() != 0) read = Zv_CopyFromClipboard(window, &bitmap);
      if (read == 1 && bitmap.Width != layout.width) {
        Zv_FreeBitmap(&bitmap);
        read = 0;
      }
    }
    ASSERT_EQ(read, 1);
    // The system hands pictures of other programs on at the screen's depth, or at their own.
    TestBitmap expected;
    HGLOBAL memory = globalCopy(dib);
    ASSERT_EQ(Zv_ChangeFromDIB(&expected, memory), KSUCCESS);
    EXPECT_EQ(seenOf(bitmap), seenOf(expected));
  }
}

}  // namespace
