#include "support/crash_note.h"

#include <cstdio>

namespace zavotest {
namespace {

char note[4096];

}  // namespace

void setCrashNote(const std::string& text) {
  std::snprintf(note, sizeof note, "%s", text.c_str());
}

const char* crashNote() {
  return note;
}

}  // namespace zavotest
