// What belongs to the loaded module as a whole: the only mutable state that is not per thread or per bitmap.
#pragma once

#include <zavo.h>

namespace zavo {

struct ThreadSettings;

// A Win32s host: pixels live in moveable global memory and temporary files instead of mapped sections.
[[nodiscard]] bool isLegacyHost();

// The TLS slot of the thread settings, TLS_OUT_OF_INDEXES while there is none.
[[nodiscard]] DWORD settingsSlot();
void setSettingsSlot(DWORD slot);

// Shared by all threads whose own settings block could not be made; zero at load and never given defaults.
[[nodiscard]] ThreadSettings& fallbackSettings();

// The 8 x 8 diagonal stripe brushes of region outlines, 0 to 7; brush k + 1 is brush k moved by one row.
constexpr unsigned frameBrushCount = 8;
[[nodiscard]] HBRUSH frameBrush(unsigned index);

// The clipboard format "VANTRIXOS 8.0 Region".
[[nodiscard]] UINT regionClipboardFormat();

// The processor has the SSSE3 instructions.
[[nodiscard]] bool cpuHasSsse3();

}  // namespace zavo
