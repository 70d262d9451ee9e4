// zavoview: a window program that shows and changes pictures through the library.
//   zavoview [FILE]
#include <objbase.h>
#include <windows.h>
// commctrl.h needs the rest of windows.h first.
#include <commctrl.h>

#include "common/text.h"
#include "resource.h"
#include "viewer.h"

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's names say types
int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES};
  InitCommonControlsEx(&controls);

  MSG message{};
  {
    zavoview::Viewer viewer;
    viewer.create(show);
    if (__argc > 1) viewer.open(zv::narrow(__wargv[1]));

    const HACCEL keys = LoadAcceleratorsW(instance, MAKEINTRESOURCEW(IDR_MAIN));
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
      if (TranslateAcceleratorW(viewer.window(), keys, &message)) continue;
      if (viewer.adjust.shown() && IsDialogMessageW(viewer.adjust.window(), &message)) continue;
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
  CoUninitialize();
  return static_cast<int>(message.wParam);
}
