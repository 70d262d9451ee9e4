// Registration with the 16-bit thunk companion and the service routine it calls.
#include "core/legacy_host.h"

namespace zavo {
namespace {

using ThunkCallback = DWORD(WINAPI*)(LPVOID request, DWORD number);
using ThunkProcedure = DWORD(WINAPI*)(LPVOID request, DWORD number, LPVOID* translations);
using RegisterFunction = BOOL(WINAPI*)(HINSTANCE module, LPCSTR companion, LPCSTR initName, LPCSTR procedureName,
                                       ThunkProcedure* procedure, ThunkCallback callback, LPVOID buffer);
using UnregisterFunction = void(WINAPI*)(HINSTANCE module);

constexpr char companionName[] = "ZAVO16.DLL";

// The universal thunk exists on Win32s alone, so it is looked up at run time.
template <typename Function>
Function systemFunction(const char* name) {
  const HMODULE kernel = GetModuleHandleA("KERNEL32");
  return kernel != nullptr ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(kernel, name)))
                           : nullptr;
}

}  // namespace

DWORD WINAPI serviceRoutine(LPVOID request, DWORD number) {
  const auto& wanted = *static_cast<const ServiceRequest*>(request);
  switch (number) {
    case 0:
      Zv_AccessBitmap(wanted.bitmap);
      return KSUCCESS;
    case 1:
      Zv_ReleaseBitmap(wanted.bitmap);
      return KSUCCESS;
    case 2:
      return static_cast<DWORD>(
          Zv_GetBitmapRowCol(wanted.bitmap, wanted.buffer, wanted.row, wanted.column, wanted.bytes));
    case 3:
      return static_cast<DWORD>(
          Zv_PutBitmapRowCol(wanted.bitmap, wanted.buffer, wanted.row, wanted.column, wanted.bytes));
    default:
      return static_cast<DWORD>(KERR_BAD_PARAMETER);
  }
}

bool registerThunkCompanion(HINSTANCE instance) {
  const auto registerThunk = systemFunction<RegisterFunction>("UTRegister");
  if (registerThunk == nullptr) return false;
  ThunkProcedure procedure = nullptr;
  return registerThunk(instance, companionName, "UTInit", "UTProc", &procedure, serviceRoutine, nullptr) != FALSE;
}

void unregisterThunkCompanion(HINSTANCE instance) {
  if (const auto unregisterThunk = systemFunction<UnregisterFunction>("UTUnRegister")) unregisterThunk(instance);
}

}  // namespace zavo
