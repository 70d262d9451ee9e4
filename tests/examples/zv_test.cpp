// The program itself: exit codes, messages, and what convert and play do with their options; and the first clients.
#include <sstream>

#include "zv_fixture.h"

namespace {

TEST_F(Zv, SaysWhatIsWrongInOneLine) {
  std::ofstream(file("text.png")) << "no picture";
  run("convert in.png four.png --bits 4");
  run("convert in.png small.png --size 5x3");
  struct {
    const char* arguments;
    DWORD exitCode;
    const char* message;
  } const cases[] = {
      {"info none.png", 1, "cannot read none.png: no such file"},
      {"info text.png", 1, "cannot read text.png: not a picture in a known format"},
      {"convert in.png none\\out.png", 1, "cannot write none\\out.png: no such directory"},
      {"frobnicate", 2, "there is no command 'frobnicate' (zv --help lists them)"},
      {"info", 2, "the picture is missing"},
      {"info in.png more", 2, "one word too many: more"},
      {"convert in.png out.jpg", 2, "cannot write out.jpg: the name must end in .png or .bmp"},
      {"convert in.png out.png --sise 3x3", 2, "unknown option --sise (zv convert --help lists them)"},
      {"convert in.png out.png --bits", 2, "--bits needs a value"},
      {"convert in.png out.png --bits 0", 2, "--bits takes a number from 1 to 32, not '0'"},
      {"convert in.png out.png --size 0x3", 2, "--size takes a size (WxH, Wx, xH or P%), not '0x3'"},
      {"convert in.png out.png --size 99999x99999", 1,
       "cannot change the size: out of memory, or the picture would be too large"},
      {"convert in.png out.png --rotate 1.234", 2,
       "--rotate takes a number from -360 to 360 with at most two decimals, not '1.234'"},
      {"convert in.png out.png --flip --resample", 2, "--resample must follow --size or --rotate"},
      {"convert in.png out.png --bits 24 --palette fixed", 2, "a palette needs --bits 1 to 8"},
      {"convert in.png out.png --colors 20 --bits 4", 2, "20 colours do not fit in 4 bits"},
      {"convert in.png out.png --palette none.png", 1, "cannot read none.png: no such file"},
      {"play in.png out --frames 0", 2, "--frames takes a number from 1 to 100000, not '0'"},
      {"play in.png out --sheet 2", 2, "cannot write out: the name must end in .png or .bmp"},
      {"paint in.png out.png --contrast 1001", 2, "--contrast takes a number from -1000 to 1000, not '1001'"},
      {"paint in.png out.png --source 1,2,3,4,5", 2, "--source takes four numbers, not '1,2,3,4,5'"},
      {"region in.png out.png --bits 2 --rect 0,0,5,5 --outline", 1,
       "cannot draw on a picture of this depth (--bits 24 helps)"},
      {"combine four.png in.png out.png --with add", 1, "cannot combine: not possible at this depth"},
      {"combine in.png out.png", 2, "the file to write is missing"},
      {"halftone in.png out.png --screen square", 2, "--screen takes one of clustered, dispersed, not 'square'"},
      {"alpha in.png out.png", 1, "cannot take the alpha: not possible at this depth"},
      {"alpha in.png out.bmp --set four.png", 2, "cannot write out.bmp: with an alpha the name must end in .png"},
      {"alpha in.png out.png --set small.png", 1,
       "cannot set the alpha (is small.png of another size?): a value is out of range"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.arguments);
    const RunResult result = run(expected.arguments);
    EXPECT_EQ(expected.exitCode, result.exitCode);
    EXPECT_EQ("zv: " + std::string(expected.message) + "\n", result.output);
  }
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(file("out.png").c_str())) << "a failure left a file behind";
}

TEST_F(Zv, TellsWhatIsAsked) {
  struct {
    const char* arguments;
    const char* text;
  } const cases[] = {{"info in.png", "format       PNG"},
                     {"info in.png", "size         37 x 11 pixels"},
                     {"info in.png", "depth        24 bits"},
                     {"info in.png", "grey         no"},
                     {"info in.png", "resolution   96 x 96 dpi"},
                     {"--help", "convert"},
                     {"convert --help", "--bits"},
                     {"convert in.png out.bmp --bits 4 --progress", "colours: 0 10 20 30"}};
  for (const auto& expected : cases) {
    const RunResult result = run(expected.arguments);
    EXPECT_EQ(0u, result.exitCode);
    EXPECT_NE(std::string::npos, result.output.find(expected.text)) << expected.text << " is not in " << result.output;
  }
}

TEST_F(Zv, AppliesOptionsInTheirOrder) {
  // A 4-bit picture has a palette, and a 24-bit copy of it only colours of that.
  const BmpFile picture = made("convert in.png out.bmp --palette fixed --bits 4 --dither none --bits 24");
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
    const BmpFile picture = made(std::string("convert in.png out.bmp --size ") + expected.size);
    EXPECT_EQ(std::pair(expected.width, expected.height), std::pair(picture.width, picture.height)) << expected.size;
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
    const auto pixel = [&](int x, int y) {
      if (expected.swapped) std::swap(x, y);
      return sampleColor(sample, expected.mirrored ? sampleWidth - 1 - x : x,
                         expected.flipped ? sampleHeight - 1 - y : y);
    };
    const BmpFile picture = made(std::string("convert in.png out.bmp ") + expected.options);
    expectPixels(picture, pixel, expected.swapped ? sampleHeight : sampleWidth,
                 expected.swapped ? sampleWidth : sampleHeight);
  }
}

TEST_F(Zv, PlaysRoundAndRoundOntoASheet) {
  const RunResult result = run("play in.png sheet.bmp --sheet 2 --frames 3");
  EXPECT_EQ(0u, result.exitCode);
  EXPECT_NE(std::string::npos, result.output.find("002  0 ms  37 x 11 at 0, 0, stays")) << result.output;
  constexpr int gap = 4;
  const auto pixel = [](int x, int y) {
    const int column = x % (sampleWidth + gap);
    const int row = y % (sampleHeight + gap);
    const bool fourth = x >= sampleWidth && y >= sampleHeight;
    return column >= sampleWidth || row >= sampleHeight || fourth ? 0xFFFFFF : sampleColor(sample, column, row);
  };
  expectPixels(readBmp(file("sheet.bmp")), pixel, 2 * sampleWidth + gap, 2 * sampleHeight + gap);
}

TEST_F(Zv, FirstClientsInEveryLanguageDoTheSame) {
  made("convert in.png out.bmp --size 300x --resample --bits 24");
  std::string expected;
  std::istringstream programs(ZAVO_FIRST_CLIENTS);
  for (std::string program; programs >> program;) {
    const RunResult result = runProgram(program, "out.bmp first.bmp");
    EXPECT_EQ(0u, result.exitCode) << program << ": " << result.output;
    const std::string written = readFile(file("first.bmp"), std::ios::in | std::ios::binary);
    if (expected.empty()) expected = written;
    EXPECT_TRUE(written == expected) << program;
    EXPECT_NE(0u, runProgram(program, "none.bmp none.bmp").exitCode) << program;
  }
  const BmpFile picture = readBmp(file("first.bmp"));
  EXPECT_EQ(150, picture.width);
  EXPECT_EQ(4, picture.bitsPerPixel);
}

}  // namespace
