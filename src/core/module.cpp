// Start and stop of the module, and all of its state that is neither a thread's nor a bitmap's. Written only during
// process attach and detach.
#include "core/module.h"

#include <cstdint>
#include <utility>

#include "core/legacy_host.h"
#include "core/owners.h"
#include "core/settings.h"

namespace zavo {
namespace {

struct Module {
  unsigned attachCount = 0;
  bool legacyHost = false;
  bool thunkRegistered = false;
  bool hasSsse3 = false;
  DWORD settingsSlot = TLS_OUT_OF_INDEXES;
  HBRUSH frameBrushes[frameBrushCount] = {};
  UINT regionFormat = 0;
  ThreadSettings fallbackSettings = {};
};

Module module;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the only one, and nobody else sees it

// A Win32s host reports its version with the top bit set and a major version below 4.
bool detectLegacyHost() {
  const DWORD version = GetVersion();
  return (version & 0x80000000u) != 0 && (version & 0xFFu) < 4;
}

void deleteFrameBrushes() {
  for (HBRUSH& brush : module.frameBrushes) {
    if (brush != nullptr) DeleteObject(brush);
    brush = nullptr;
  }
}

// Stripes of four set and four clear pixels; each brush begins one row further down the pattern than the one
// before. All or none.
int createFrameBrushes() {
  constexpr uint8_t stripes[8] = {0x0F, 0x1E, 0x3C, 0x78, 0xF0, 0xE1, 0xC3, 0x87};
  for (unsigned k = 0; k < frameBrushCount; ++k) {
    uint16_t rows[8];  // monochrome rows are padded to words
    for (unsigned y = 0; y < 8; ++y) rows[y] = stripes[(k + y) % 8];
    const BitmapObject pattern(CreateBitmap(8, 8, 1, 1, rows));
    if (pattern) module.frameBrushes[k] = CreatePatternBrush(pattern.get());
    if (module.frameBrushes[k] == nullptr) {
      deleteFrameBrushes();
      return KERR_NO_MEMORY;
    }
  }
  return KSUCCESS;
}

bool attachProcess(HINSTANCE instance) {
  if (module.attachCount == 0) {
    module.legacyHost = detectLegacyHost();
    __builtin_cpu_init();
    module.hasSsse3 = __builtin_cpu_supports("ssse3") != 0;
    if (module.legacyHost) module.thunkRegistered = registerThunkCompanion(instance);
  }
  if (createThreadSettings(true) == nullptr) return false;
  // Without the brushes only region outlines cannot be drawn, so the module loads all the same.
  (void)createFrameBrushes();
  module.regionFormat = RegisterClipboardFormatA("VANTRIXOS 8.0 Region");
  ++module.attachCount;
  return true;
}

// The detaching thread's settings block is left to the end of the process.
void detachProcess(HINSTANCE instance) {
  // The system also comes here after a refused attach, which was not counted.
  if (module.attachCount > 0) --module.attachCount;
  deleteFrameBrushes();
  if (module.settingsSlot != TLS_OUT_OF_INDEXES) TlsFree(module.settingsSlot);
  module.settingsSlot = TLS_OUT_OF_INDEXES;
  if (module.attachCount == 0 && std::exchange(module.thunkRegistered, false)) unregisterThunkCompanion(instance);
}

}  // namespace

ThreadSettings& fallbackSettings() {
  return module.fallbackSettings;
}

bool isLegacyHost() {
  return module.legacyHost;
}

bool cpuHasSsse3() {
  return module.hasSsse3;
}

DWORD settingsSlot() {
  return module.settingsSlot;
}

void setSettingsSlot(DWORD slot) {
  module.settingsSlot = slot;
}

HBRUSH frameBrush(unsigned index) {
  return index < frameBrushCount ? module.frameBrushes[index] : nullptr;
}

UINT regionClipboardFormat() {
  return module.regionFormat;
}

}  // namespace zavo

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      return zavo::attachProcess(instance) ? TRUE : FALSE;
    case DLL_PROCESS_DETACH:
      zavo::detachProcess(instance);
      return TRUE;
    case DLL_THREAD_DETACH:
      zavo::freeThreadSettings();
      return TRUE;
    default:  // a new thread's settings are made when it first needs them
      return TRUE;
  }
}
