// What the test program prints when it crashes, so that the crash can be repeated.
#pragma once

#include <cstdio>
#include <string>

namespace zavotest {

inline char crashNote[4096] = "";

inline void setCrashNote(const std::string& text) {
  std::snprintf(crashNote, sizeof crashNote, "%s", text.c_str());
}

}  // namespace zavotest
