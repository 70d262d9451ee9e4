// The program itself: exit codes, messages, and what convert does with its options.
#include <fstream>

#include "zv_fixture.h"

namespace {

TEST_F(Zv, SaysWhatIsWrongInOneLine) {
  std::ofstream(file("text.png")) << "no picture";
  struct {
    const char* arguments;
    DWORD exitCode;
    const char* message;
  } const cases[] = {
      {"info none.png", 1, "zv: cannot read none.png: no such file\n"},
      {"info text.png", 1, "zv: cannot read text.png: not a picture in a known format\n"},
      {"convert in.png none\\out.png", 1, "zv: cannot write none\\out.png: no such directory\n"},
      {"frobnicate", 2, "zv: there is no command 'frobnicate' (zv --help lists them)\n"},
      {"info", 2, "zv: the picture is missing\n"},
      {"info in.png more", 2, "zv: one word too many: more\n"},
      {"convert in.png out.jpg", 2, "zv: cannot write out.jpg: the name must end in .png or .bmp\n"},
      {"convert in.png out.png --sise 3x3", 2, "zv: unknown option --sise (zv convert --help lists them)\n"},
      {"convert in.png out.png --bits", 2, "zv: --bits needs a value\n"},
      {"convert in.png out.png --bits 0", 2, "zv: --bits takes a number from 1 to 32, not '0'\n"},
      {"convert in.png out.png --size 0x3", 2, "zv: --size takes a size (WxH, Wx, xH or P%), not '0x3'\n"},
      {"convert in.png out.png --size 99999x99999", 1,
       "zv: cannot change the size: out of memory, or the picture would be too large\n"},
      {"convert in.png out.png --rotate 1.234", 2,
       "zv: --rotate takes a number from -360 to 360 with at most two decimals, not '1.234'\n"},
      {"convert in.png out.png --flip --resample", 2, "zv: --resample must follow --size or --rotate\n"},
      {"convert in.png out.png --bits 24 --palette fixed", 2, "zv: a palette needs --bits 1 to 8\n"},
      {"convert in.png out.png --colors 20 --bits 4", 2, "zv: 20 colours do not fit in 4 bits\n"},
      {"play text.png out", 1, "zv: cannot read text.png: not a picture in a known format\n"},
      {"play in.png out --frames 0", 2, "zv: --frames takes a number from 1 to 100000, not '0'\n"},
      {"play in.png out --sheet 2", 2, "zv: cannot write out: the name must end in .png or .bmp\n"},
      {"convert in.png out.png --palette none.png", 1, "zv: cannot read none.png: no such file\n"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.arguments);
    const RunResult result = run(expected.arguments);
    EXPECT_EQ(expected.exitCode, result.exitCode);
    EXPECT_EQ(expected.message, result.output);
  }
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(file("out.png").c_str())) << "a failure left a file behind";
}

TEST_F(Zv, TellsWhatAPictureIs) {
  const RunResult result = run("info in.png");
  EXPECT_EQ(0u, result.exitCode);
  for (const char* line : {"format       PNG", "size         37 x 11 pixels", "depth        24 bits", "grey         no",
                           "resolution   96 x 96 dpi"})
    EXPECT_NE(std::string::npos, result.output.find(line)) << line << " is not in:\n" << result.output;
}

TEST_F(Zv, AppliesOptionsInTheirOrder) {
  // A 4-bit picture has a palette, and a 24-bit copy of it only colours of that.
  const RunResult result = run("convert in.png out.bmp --palette fixed --bits 4 --dither none --bits 24 --progress");
  EXPECT_EQ(0u, result.exitCode) << result.output;
  EXPECT_NE(std::string::npos, result.output.find("colours: 0 10 20 30")) << result.output;
  const BmpFile picture = readBmp(file("out.bmp"));
  EXPECT_EQ(24, picture.bitsPerPixel);
  for (const uint32_t color : picture.colors) {
    for (int shift = 0; shift < 24; shift += 8) {
      const uint32_t level = color >> shift & 255;
      EXPECT_TRUE(level == 0 || level == 128 || level == 192 || level == 255) << level;
    }
  }
}

TEST_F(Zv, FindsTheSidesOfASize) {
  struct {
    const char* size;
    int width, height;
  } const cases[] = {{"12x7", 12, 7}, {"74x", 74, 22}, {"x22", 74, 22}, {"300%", 111, 33}, {"1%", 1, 1}, {"x1", 3, 1}};
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.size);
    EXPECT_EQ("", run(std::string("convert in.png out.bmp --size ") + expected.size).output);
    const BmpFile picture = readBmp(file("out.bmp"));
    EXPECT_EQ(expected.width, picture.width);
    EXPECT_EQ(expected.height, picture.height);
  }
}

TEST_F(Zv, TurnsPicturesAsSeen) {
  struct {
    const char* options;
    bool swapped, flipped, mirrored;  /// The pixel at x, y of the result is that of the sample at y, x, and so on.
  } const cases[] = {
      {"--flip", false, true, false},      {"--mirror", false, false, true},
      {"--rotate 180", false, true, true}, {"--rotate 90", true, true, false},
      {"--rotate -90", true, false, true}, {"--rotate 90 --flip --mirror --rotate 90", false, false, false},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.options);
    EXPECT_EQ("", run(std::string("convert in.png out.bmp ") + expected.options).output);
    const BmpFile picture = readBmp(file("out.bmp"));
    ASSERT_EQ(expected.swapped ? sampleHeight : sampleWidth, picture.width);
    ASSERT_EQ(expected.swapped ? sampleWidth : sampleHeight, picture.height);
    for (int y = 0; y < picture.height; y++) {
      for (int x = 0; x < picture.width; x++) {
        const int column = expected.swapped ? y : x;
        const int row = expected.swapped ? x : y;
        ASSERT_EQ(sampleColor(sample, expected.mirrored ? sampleWidth - 1 - column : column,
                              expected.flipped ? sampleHeight - 1 - row : row),
                  picture.colors[static_cast<size_t>(y * picture.width + x)])
            << x << ", " << y;
      }
    }
  }
}

TEST_F(Zv, PlaysRoundAndRoundOntoASheet) {
  const RunResult result = run("play in.png sheet.bmp --sheet 2 --frames 3");
  EXPECT_EQ(0u, result.exitCode);
  EXPECT_NE(std::string::npos, result.output.find("002  0 ms  37 x 11 at 0, 0, stays")) << result.output;
  const BmpFile sheet = readBmp(file("sheet.bmp"));
  constexpr int gap = 4;
  ASSERT_EQ(2 * sampleWidth + gap, sheet.width);
  ASSERT_EQ(2 * sampleHeight + gap, sheet.height);
  for (int y = 0; y < sheet.height; y++) {
    for (int x = 0; x < sheet.width; x++) {
      const int column = x % (sampleWidth + gap);
      const int row = y % (sampleHeight + gap);
      const bool fourth = x >= sampleWidth && y >= sampleHeight;
      const bool between = column >= sampleWidth || row >= sampleHeight || fourth;
      ASSERT_EQ(between ? 0xFFFFFF : sampleColor(sample, column, row),
                sheet.colors[static_cast<size_t>(y * sheet.width + x)])
          << x << ", " << y;
    }
  }
}

TEST_F(Zv, ExplainsItself) {
  const RunResult general = run("--help");
  EXPECT_EQ(0u, general.exitCode);
  EXPECT_NE(std::string::npos, general.output.find("convert"));
  const RunResult command = run("convert --help");
  EXPECT_EQ(0u, command.exitCode);
  EXPECT_NE(std::string::npos, command.output.find("--bits"));
}

}  // namespace
