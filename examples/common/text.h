// Text is UTF-8 inside the program; Windows takes and gives wide strings.
#pragma once

#include <cstdio>
#include <string>

namespace zv {

std::wstring wide(const std::string& utf8);
std::string narrow(const std::wstring& text);

/// What Windows says about an error code, in our own few words where they are shorter.
std::string windowsErrorText(unsigned long code);

/// "a number": printf for std::string.
[[gnu::format(__MINGW_PRINTF_FORMAT, 1, 2)]] std::string format(const char* pattern, ...);

}  // namespace zv
