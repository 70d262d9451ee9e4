// What the test program prints when it crashes, so that the crash can be repeated.
#pragma once

#include <string>

namespace zavotest {

void setCrashNote(const std::string& note);
[[nodiscard]] const char* crashNote();

}  // namespace zavotest
