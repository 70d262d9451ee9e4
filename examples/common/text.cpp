#include "common/text.h"

#include <cstdarg>
#include <cstdio>
#include <windows.h>

namespace zv {

std::wstring wide(const std::string& utf8) {
  const int bytes = static_cast<int>(utf8.size());
  std::wstring result(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, result.data(), static_cast<int>(result.size()));
  return result;
}

std::string narrow(const std::wstring& text) {
  const int units = static_cast<int>(text.size());
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), units, result.data(), bytes, nullptr, nullptr);
  return result;
}

std::string windowsErrorText(unsigned long code) {
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
      return "no such file";
    case ERROR_PATH_NOT_FOUND:
      return "no such directory";
    case ERROR_ACCESS_DENIED:
      return "access denied";
    case ERROR_SHARING_VIOLATION:
      return "the file is in use";
    case ERROR_DISK_FULL:
      return "the disk is full";
    default:
      return format("Windows error %lu", code);
  }
}

std::string format(const char* pattern, ...) {
  va_list arguments;
  va_start(arguments, pattern);
  va_list again;
  va_copy(again, arguments);
  std::string result(static_cast<size_t>(std::vsnprintf(nullptr, 0, pattern, arguments)), '\0');
  std::vsnprintf(result.data(), result.size() + 1, pattern, again);
  va_end(again);
  va_end(arguments);
  return result;
}

}  // namespace zv
