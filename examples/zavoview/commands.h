// The commands of the menu and of the keys: what each does, when it can be had, when it is checked.
#pragma once

#include <span>
#include <windows.h>

namespace zavoview {

class Viewer;

/// What a command needs to make sense, added up.
enum Needs : unsigned {
  NeedsNothing = 0,
  NeedsPicture = 1,
  NeedsSelection = 2,
  NeedsUndo = 4,
  NeedsClipboard = 8,
  NeedsAnimation = 16,
};

struct Command {
  int id;
  unsigned needs;
  void (*run)(Viewer& viewer, unsigned argument);
  unsigned argument = 0;  /// Tells members of a family apart.
  /// Whether its menu item has a check mark; null: never.
  bool (*checked)(Viewer& viewer, unsigned argument) = nullptr;
};

// The commands by menu, each list in a file of its own.
std::span<const Command> fileCommands();
std::span<const Command> editCommands();
std::span<const Command> selectCommands();
std::span<const Command> viewCommands();
std::span<const Command> pictureCommands();
std::span<const Command> animationCommands();

/// Runs a command, unless what it needs is not there.
void runCommand(Viewer& viewer, int id);
/// Greys and checks the items of a menu that is about to open.
void showCommandStates(Viewer& viewer, HMENU menu);

}  // namespace zavoview
