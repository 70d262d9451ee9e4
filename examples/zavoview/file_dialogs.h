// Windows' own dialogs for choosing files.
#pragma once

#include <optional>
#include <string>
#include <windows.h>

namespace zavoview {

/// These give nothing when the user cancels.
std::optional<std::string> askOpenPath(HWND owner);
/// Proposes the name with the ending .png.
std::optional<std::string> askSavePath(HWND owner, const std::string& name);

/// Whether the ending is one of a format that pictures are written in.
bool canWrite(const std::string& path);

}  // namespace zavoview
