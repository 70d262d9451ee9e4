// The first clients in C, C++ and Fortran do the same work: their pictures are the same, byte by byte.
#include <sstream>

#include "zv_fixture.h"

namespace {

std::string readBytes(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST_F(Zv, FirstClientsInEveryLanguageDoTheSame) {
  ASSERT_EQ(0u, run("convert in.png in.bmp --size 300x --resample --bits 24").exitCode);
  std::string expected;
  std::istringstream programs(ZAVO_FIRST_CLIENTS);
  for (std::string program; programs >> program;) {
    const RunResult result = runProgram(program, "in.bmp " + program + ".bmp");
    EXPECT_EQ(0u, result.exitCode) << program << ": " << result.output;
    const std::string written = readBytes(file(program + ".bmp"));
    if (expected.empty()) expected = written;
    EXPECT_TRUE(written == expected) << program;
    EXPECT_NE(0u, runProgram(program, "none.bmp out.bmp").exitCode) << program;
  }
  const BmpFile picture = readBmp(file("first_c.bmp"));
  EXPECT_EQ(150, picture.width);
  EXPECT_EQ(4, picture.bitsPerPixel);
}

}  // namespace
