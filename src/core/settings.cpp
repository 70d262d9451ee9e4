// The blocks of thread settings and the exports that only read or write them.
#include "core/settings.h"

#include "core/memory.h"
#include "core/module.h"

namespace zavo {
namespace {

constexpr uint32_t defaultDisplayMode = 12;

void writeDefaults(ThreadSettings& settings) {
  settings.io = {Zv_OsOpen, Zv_OsRead, Zv_OsWrite, Zv_OsSeek, Zv_OsClose};
  settings.defaultDithering = 7;
  settings.defaultXResolution = 150;
  settings.defaultYResolution = 150;
  settings.paintBitmapInfo.header.biSize = sizeof(BITMAPINFOHEADER);
  settings.paintBitmapInfo.header.biPlanes = 1;
  writeIndexTable(settings.paintBitmapInfo);
  settings.displayMode = defaultDisplayMode;
  settings.paintGamma = 100;
  for (unsigned i = 0; i < 256; ++i) settings.paintAdjustTable[i] = static_cast<uint8_t>(i);
}

int exchange(int32_t& setting, int value) {
  const int previous = setting;
  setting = value;
  return previous;
}

}  // namespace

void writeIndexTable(PaintHeader& header) {
  auto* indexes = reinterpret_cast<uint16_t*>(header.slots);
  for (uint16_t i = 0; i < 256; ++i) indexes[i] = i;
}

ThreadSettings* createThreadSettings(bool firstTime) {
  if (firstTime) setSettingsSlot(TlsAlloc());
  if (settingsSlot() == TLS_OUT_OF_INDEXES) return nullptr;

  auto settings = OsBlock<ThreadSettings>::allocateZeroed(1);
  if (!settings || !TlsSetValue(settingsSlot(), settings.get())) {
    if (firstTime) {
      TlsFree(settingsSlot());
      setSettingsSlot(TLS_OUT_OF_INDEXES);
    }
    return nullptr;
  }
  writeDefaults(*settings);
  return settings.release();
}

void freeThreadSettings() {
  if (settingsSlot() == TLS_OUT_OF_INDEXES) return;
  Zv_OsFree(TlsGetValue(settingsSlot()));
  TlsSetValue(settingsSlot(), nullptr);
}

ThreadSettings& currentSettings() {
  if (settingsSlot() != TLS_OUT_OF_INDEXES) {
    if (auto* own = static_cast<ThreadSettings*>(TlsGetValue(settingsSlot()))) return *own;
  }
  ThreadSettings* made = createThreadSettings(false);
  return made != nullptr ? *made : fallbackSettings();
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_SetDefaultXResolution(int dpi) {
  return exchange(currentSettings().defaultXResolution, dpi);
}

int ZAVO_CALL Zv_SetDefaultYResolution(int dpi) {
  return exchange(currentSettings().defaultYResolution, dpi);
}

int ZAVO_CALL Zv_GetDefaultXResolution() {
  return currentSettings().defaultXResolution;
}

int ZAVO_CALL Zv_GetDefaultYResolution() {
  return currentSettings().defaultYResolution;
}

int ZAVO_CALL Zv_DefaultDithering(unsigned method) {
  if (method > 8) return KERR_BAD_PARAMETER;
  currentSettings().defaultDithering = method;
  return KSUCCESS;
}

StatusCallback ZAVO_CALL Zv_SetStatusCallBack(StatusCallback callback) {
  ThreadSettings& settings = currentSettings();
  const StatusCallback previous = settings.statusCallback;
  settings.statusCallback = callback;
  return previous;
}

StatusCallback ZAVO_CALL Zv_GetStatusCallBack() {
  return currentSettings().statusCallback;
}
