// The 16-bit thunk companion of a Win32s host, which may call back for rows of a bitmap.
#pragma once

#include <zavo.h>

#include <cstdint>

namespace zavo {

// What the companion asks for; the meaning of the fields is that of the row functions.
struct ServiceRequest {
  BitmapHandle* bitmap;
  uint8_t* buffer;
  uint32_t row;
  uint32_t column;
  uint32_t bytes;
};

// Requests: 0 make the bitmap addressable, 1 release it, 2 read a row piece, 3 write one. Anything else:
// KERR_BAD_PARAMETER.
DWORD WINAPI serviceRoutine(LPVOID request, DWORD number);

// Registers the service routine through the system's universal thunk, where the system has one and the companion
// module can be loaded. True when it did.
[[nodiscard]] bool registerThunkCompanion(HINSTANCE instance);
// Undoes a registration that was made.
void unregisterThunkCompanion(HINSTANCE instance);

}  // namespace zavo
