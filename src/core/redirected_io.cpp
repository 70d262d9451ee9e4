// File access on behalf of an application, redirected per thread to the application's own functions.
// The library's own temporary files never come through here.
#include <zavo.h>

#include <utility>

#include "core/settings.h"

namespace zavo {
namespace {

// The thread's entry. The fallback settings hold none: then the library's own function serves.
template <typename Function>
Function inForce(Function IoTable::*entry, Function fallback) {
  const Function function = currentSettings().io.*entry;
  return function != nullptr ? function : fallback;
}

template <typename Function>
void filter(Function& entry, Function* exchanged) {
  if (exchanged == nullptr) return;
  const Function previous = entry;
  if (*exchanged != nullptr) entry = *exchanged;
  *exchanged = previous;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

void* ZAVO_CALL Zv_RedirectIO(IoOpenFunction open, IoReadFunction read, IoWriteFunction write, IoSeekFunction seek,
                              IoCloseFunction close) {
  ThreadSettings& settings = currentSettings();
  settings.io = {.open = open != nullptr ? open : Zv_OsOpen,
                 .read = read != nullptr ? read : Zv_OsRead,
                 .write = write != nullptr ? write : Zv_OsWrite,
                 .seek = seek != nullptr ? seek : Zv_OsSeek,
                 .close = close != nullptr ? close : Zv_OsClose};
  return &settings;
}

void* ZAVO_CALL Zv_FilterIO(IoOpenFunction* open, IoReadFunction* read, IoWriteFunction* write, IoSeekFunction* seek,
                            IoCloseFunction* close) {
  ThreadSettings& settings = currentSettings();
  filter(settings.io.open, open);
  filter(settings.io.read, read);
  filter(settings.io.write, write);
  filter(settings.io.seek, seek);
  filter(settings.io.close, close);
  return &settings;
}

int ZAVO_CALL Zv_RedirectedOpen(const char* name, int openFlags, int permissionFlags) {
  return inForce(&IoTable::open, &Zv_OsOpen)(name, openFlags, permissionFlags);
}

int ZAVO_CALL Zv_RedirectedRead(int file, void* buffer, unsigned count) {
  return inForce(&IoTable::read, &Zv_OsRead)(file, buffer, count);
}

int ZAVO_CALL Zv_RedirectedWrite(int file, const void* buffer, unsigned count) {
  return inForce(&IoTable::write, &Zv_OsWrite)(file, buffer, count);
}

unsigned ZAVO_CALL Zv_RedirectedSeek(int file, int offset, int origin) {
  return inForce(&IoTable::seek, &Zv_OsSeek)(file, offset, origin);
}

int ZAVO_CALL Zv_RedirectedClose(int file) {
  return inForce(&IoTable::close, &Zv_OsClose)(file);
}
