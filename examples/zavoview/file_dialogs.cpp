#include "file_dialogs.h"

#include <windows.h>
// commdlg.h needs the rest of windows.h first.
#include <commdlg.h>

#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"

namespace zavoview {

namespace {

constexpr DWORD pathRoom = 32768;

using AskFunction = BOOL(WINAPI*)(OPENFILENAMEW*);

std::optional<std::string> ask(HWND owner, const wchar_t* filter, const wchar_t* ending, const std::wstring& proposed,
                               DWORD flags, AskFunction askPath) {
  std::wstring path = proposed;
  path.resize(pathRoom);
  OPENFILENAMEW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = owner;
  question.lpstrFilter = filter;
  question.lpstrDefExt = ending;
  question.lpstrFile = path.data();
  question.nMaxFile = pathRoom;
  question.Flags = flags | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_EXPLORER;
  if (!askPath(&question)) return {};
  path.resize(path.find(L'\0'));
  return zv::narrow(path);
}

}  // namespace

std::optional<std::string> askOpenPath(HWND owner) {
  return ask(owner,
             L"Pictures\0*.png;*.jpg;*.jpeg;*.bmp;*.gif;*.tif;*.tiff\0"
             L"All Files\0*.*\0",
             nullptr, L"", OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST, GetOpenFileNameW);
}

std::optional<std::string> askSavePath(HWND owner, const std::string& name) {
  const std::string stem = name.substr(0, name.find_last_of('.'));
  return ask(owner, L"PNG\0*.png\0Bitmap\0*.bmp\0", L"png", zv::wide(stem + ".png"),
             OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST, GetSaveFileNameW);
}

bool canWrite(const std::string& path) try {
  zv::outputFormat(path);
  return true;
} catch (const zv::UsageError&) {
  return false;
}

}  // namespace zavoview
