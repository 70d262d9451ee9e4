// The menus File and Help.
#include "commands.h"
#include "common/text.h"
#include "file_dialogs.h"
#include "printing.h"
#include "resource.h"
#include "viewer.h"

namespace zavoview {

namespace {

void open(Viewer& viewer, unsigned) {
  if (!viewer.confirmDiscard()) return;
  if (const std::optional<std::string> path = askOpenPath(viewer.window())) viewer.open(*path);
}

void save(Viewer& viewer, unsigned askName) {
  viewer.save(askName != 0);
}

void print(Viewer& viewer, unsigned) {
  viewer.animation.release();
  printPicture(viewer.window(), viewer.document.picture(), viewer.document.name());
}

void leave(Viewer& viewer, unsigned) {
  PostMessageW(viewer.window(), WM_CLOSE, 0, 0);
}

void about(Viewer& viewer, unsigned) {
  VersionRecord version{};
  Zv_VersionInfo(&version);
  const std::string text = zv::format("zavoview shows and changes pictures.\n\n%.60s %d.%d, %.16s", version.Product,
                                      version.Major, version.Minor, version.BuildDate);
  MessageBoxW(viewer.window(), zv::wide(text).c_str(), L"About zavoview", MB_OK | MB_ICONINFORMATION);
}

constexpr Command commands[] = {
    {ID_OPEN, NeedsNothing, open},   {ID_SAVE, NeedsPicture, save, 0}, {ID_SAVE_AS, NeedsPicture, save, 1},
    {ID_PRINT, NeedsPicture, print}, {ID_EXIT, NeedsNothing, leave},   {ID_ABOUT, NeedsNothing, about},
};

}  // namespace

std::span<const Command> fileCommands() {
  return commands;
}

}  // namespace zavoview
