#include "commands.h"

#include "viewer.h"

namespace zavoview {

namespace {

const Command* find(int id) {
  for (const auto commands :
       {fileCommands(), editCommands(), selectCommands(), viewCommands(), pictureCommands(), animationCommands()})
    for (const Command& command : commands)
      if (command.id == id) return &command;
  return nullptr;
}

bool available(Viewer& viewer, unsigned needs) {
  if ((needs & NeedsPicture) != 0 && !viewer.document.hasPicture()) return false;
  if ((needs & NeedsSelection) != 0 && !viewer.document.hasSelection()) return false;
  if ((needs & NeedsUndo) != 0 && !viewer.document.canUndo()) return false;
  if ((needs & NeedsClipboard) != 0 && Zv_ClipboardReady() == 0) return false;
  return (needs & NeedsAnimation) == 0 || viewer.animation.loaded();
}

}  // namespace

void runCommand(Viewer& viewer, int id) {
  // An operation that is under way has a status callback; it cannot share the picture.
  if (Zv_GetStatusCallBack() != nullptr) return;
  const Command* const command = find(id);
  if (command != nullptr && available(viewer, command->needs)) command->run(viewer, command->argument);
}

void showCommandStates(Viewer& viewer, HMENU menu) {
  for (int position = 0; position < GetMenuItemCount(menu); position++) {
    const Command* const command = find(static_cast<int>(GetMenuItemID(menu, position)));
    if (command == nullptr) continue;
    const auto item = static_cast<UINT>(position);
    EnableMenuItem(menu, item, MF_BYPOSITION | (available(viewer, command->needs) ? MF_ENABLED : MF_GRAYED));
    const bool checked = command->checked != nullptr && command->checked(viewer, command->argument);
    CheckMenuItem(menu, item, MF_BYPOSITION | (checked ? MF_CHECKED : MF_UNCHECKED));
  }
}

}  // namespace zavoview
