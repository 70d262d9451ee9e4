// Printing the picture, with a dialog that shows the progress and can stop it.
#pragma once

#include <string>
#include <windows.h>

#include "common/picture.h"

namespace zavoview {

/// Asks for the printer and prints the picture on one page, fitted and centred. Throws a Failure when the printer does
/// not print; a user who cancels is no failure.
void printPicture(HWND owner, zv::Picture& picture, const std::string& name);

}  // namespace zavoview
