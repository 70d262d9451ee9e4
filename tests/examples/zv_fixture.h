// Runs of zv.exe in a temporary directory that holds in.png.
#pragma once

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <objbase.h>
#include <string>
#include <wincodec.h>
#include <windows.h>

#include "picture_files.h"

inline const FrameFormat sample = {"png 24", GUID_ContainerFormatPng, GUID_WICPixelFormat24bppBGR, 24, false};

struct RunResult {
  DWORD exitCode;
  std::string output;  /// What went to stdout and stderr.
};

inline std::string readFile(const std::string& path, std::ios::openmode mode = std::ios::in) {
  std::ifstream stream(path, mode);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class Zv : public testing::Test {
 protected:
  void SetUp() override {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    writeSample(sample, file("in.png"), 96, 96);
    CoUninitialize();
  }

  std::string file(const std::string& name) const { return directory.file(name); }

  /// Runs zv in the temporary directory.
  RunResult run(const std::string& arguments) const { return runProgram("zv", arguments); }

  /// The same for another of the sample programs.
  RunResult runProgram(const std::string& name, const std::string& arguments) const {
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    const std::string folder = std::string(program).substr(0, std::string(program).find_last_of('\\') + 1);
    std::string line = "\"" + folder + name + ".exe\" " + arguments;

    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const HANDLE log = CreateFileA(file("log").c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                   CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = log;
    PROCESS_INFORMATION process{};
    RunResult result{0xFFFFFFFF, ""};
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, file("").c_str(), &startup,
                       &process)) {
      WaitForSingleObject(process.hProcess, INFINITE);
      GetExitCodeProcess(process.hProcess, &result.exitCode);
      CloseHandle(process.hProcess);
      CloseHandle(process.hThread);
    }
    CloseHandle(log);
    result.output = readFile(file("log"));
    return result;
  }

  /// What a run that succeeds without a word writes to out.bmp.
  BmpFile made(const std::string& arguments) const {
    const RunResult result = run(arguments);
    EXPECT_EQ(0u, result.exitCode);
    EXPECT_EQ("", result.output);
    return readBmp(file("out.bmp"));
  }

  /// Expects of every pixel what expected(x, y) gives.
  template <typename Expected>
  static void expectPixels(const BmpFile& picture, Expected expected, int width = sampleWidth,
                           int height = sampleHeight) {
    ASSERT_EQ(width, picture.width);
    ASSERT_EQ(height, picture.height);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) ASSERT_EQ(expected(x, y), picture.at(x, y)) << x << ", " << y;
    }
  }

  TemporaryDirectory directory;
};
