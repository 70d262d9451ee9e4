// Beginning and ending print jobs.
#include "display/print_job.h"

#include <cstring>

#include "core/owners.h"

namespace zavo {
namespace {

// The profile's text has the form device name, driver, port.
struct PrinterName {
  char text[81];
  const char* driver;
  const char* port;
};

// Ends `text` at its first comma; what follows it, empty without one.
char* cutAtComma(char* text) {
  char* comma = strchr(text, ',');
  if (comma == nullptr) return text + strlen(text);
  *comma = '\0';
  return comma + 1;
}

MemoryDC openDefaultPrinter() {
  PrinterName name = {};
  GetProfileStringA("windows", "device", "", name.text, sizeof name.text);
  char* driver = cutAtComma(name.text);
  name.port = cutAtComma(driver);
  name.driver = driver;
  return MemoryDC(CreateDCA(name.driver, name.text, name.port, nullptr));
}

}  // namespace

bool PrintJob::open() {
  if (dc_ != nullptr) return true;
  MemoryDC printer = openDefaultPrinter();
  if (!printer) return false;
  DOCINFOA document = {};
  document.cbSize = sizeof document;
  document.lpszDocName = "ZAVO GRAPHIC";
  if (StartDocA(printer.get(), &document) < 1) return false;
  StartPage(printer.get());
  dc_ = printer.release();
  owner_ = JobOwner::library;
  return true;
}

HDC PrintJob::finish(bool endJob) {
  if (!endJob) return dc_;
  const bool pageEnded = EndPage(dc_) >= 1;
  const bool jobEnded = EndDoc(dc_) > 0;
  DeleteDC(dc_);
  return pageEnded && jobEnded ? dc_ : nullptr;
}

void PrintJob::cancel(bool endJob) {
  if (owner_ == JobOwner::library) {
    AbortDoc(dc_);
    DeleteDC(dc_);
  } else if (endJob) {
    (void)finish(true);
  }
}

}  // namespace zavo
