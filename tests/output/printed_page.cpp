#include "output/printed_page.h"

#include <cstdlib>
#include <sstream>
#include <winspool.h>

#include "output/unix_shell.h"

namespace zavotest {
namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string defaultPrinter() {
  char name[256];
  DWORD size = sizeof name;
  return GetDefaultPrinterA(name, &size) ? name : "";
}

// A binary pixmap of 8 bits a channel.
Picture readPixmap(std::istream& stream) {
  std::string kind;
  int width = 0, height = 0, highest = 0;
  stream >> kind >> width >> height >> highest;
  stream.get();
  if (kind != "P6" || highest != 255) return {};
  Picture picture(width, height);
  for (uint32_t& pixel : picture.pixels) {
    for (int channel = 0; channel < 3; ++channel) pixel = pixel << 8 | static_cast<uint32_t>(stream.get());
  }
  return picture;
}

}  // namespace

std::string whyNoPrinter() {
  if (const std::string reason = variable("ZAVO_NO_PRINTER"); !reason.empty()) return "no printer: " + reason;
  if (variable("ZAVO_PRINTER").empty()) return "no printer: not run by script/printer";
  // Asking for its name makes Wine look up the printers.
  const std::string name = defaultPrinter();
  return name == variable("LPDEST") ? "" : "no printer: the default is another one, or none: " + name;
}

PageSize defaultPageSize() {
  HDC dc = CreateICA("WINSPOOL", defaultPrinter().c_str(), nullptr, nullptr);
  const PageSize page = {GetDeviceCaps(dc, HORZRES), GetDeviceCaps(dc, VERTRES), GetDeviceCaps(dc, LOGPIXELSX)};
  DeleteDC(dc);
  return page;
}

PrintedPage takePrintedPage() {
  const ShellResult taken = shell(
      "file=$(mktemp) && trap 'rm $file' EXIT && \"$ZAVO_PRINTER\" --take $file >/dev/null || exit 1\n"
      "for what in Pages Title; do echo \"$(pdfinfo $file | sed -n \"s/^$what: *//p\")\"; done\n"
      "pdftoppm -singlefile -aa no -aaVector no -r " +
      std::to_string(defaultPageSize().dpi) + " $file");
  PrintedPage page;
  if (taken.exitCode != 0) {
    page.trouble = taken.output;
    return page;
  }
  std::istringstream output(taken.output);
  output >> page.pages;
  output.get();
  std::getline(output, page.title);
  page.picture = readPixmap(output);
  return page;
}

}  // namespace zavotest
