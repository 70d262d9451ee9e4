// The printer that the tests print on (script/printer), and what came out of it.
#pragma once

#include <string>
#include <windows.h>

#include "support/test_bitmap.h"

namespace zavotest {

// Why there is no printer to print on; empty when there is one.
std::string whyNoPrinter();

// Printer pixels of the page and of an inch.
struct PageSize {
  int width;
  int height;
  int dpi;
};
PageSize defaultPageSize();

// The newest document in the printer's tray, which is taken out: its pages, and the first one at the printer's own
// resolution. No pages when nothing was printed since the last one was taken.
struct PrintedPage {
  int pages = 0;
  std::string title;
  Picture picture;
  std::string trouble;  // what went wrong, for the test's message
};
PrintedPage takePrintedPage();

}  // namespace zavotest
