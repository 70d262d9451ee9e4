#include "output/printed_page.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <winspool.h>

#include "output/unix_shell.h"

namespace zavotest {
namespace {

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// A binary pixmap of 8 bits a channel.
Picture readPixmap(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::string kind;
  int width = 0, height = 0, highest = 0;
  stream >> kind >> width >> height >> highest;
  stream.get();
  if (kind != "P6" || highest != 255) return {};
  Picture picture(width, height);
  std::string bytes(picture.pixels.size() * 3, '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  for (size_t i = 0; i < picture.pixels.size(); ++i) {
    const auto channel = [&](size_t which) { return uint32_t{static_cast<uint8_t>(bytes[i * 3 + which])}; };
    picture.pixels[i] = channel(0) << 16 | channel(1) << 8 | channel(2);
  }
  return picture;
}

std::string wordAfter(const std::string& text, const std::string& label) {
  const size_t at = text.find(label);
  if (at == std::string::npos) return {};
  std::istringstream rest(text.substr(at + label.size()));
  std::string line;
  std::getline(rest >> std::ws, line);
  return line;
}

}  // namespace

std::string whyNoPrinter() {
  if (const std::string reason = variable("ZAVO_NO_PRINTER"); !reason.empty()) return "no printer: " + reason;
  if (variable("ZAVO_PRINTER").empty()) return "no printer: not run by script/printer";
  // Asking for its name makes Wine look up the printers.
  char name[256];
  DWORD size = sizeof name;
  if (!GetDefaultPrinterA(name, &size)) return "no printer: the system knows of none";
  if (variable("LPDEST") != name) return std::string("no printer: the default is another one, ") + name;
  return {};
}

PageSize defaultPageSize() {
  char name[256];
  DWORD size = sizeof name;
  GetDefaultPrinterA(name, &size);
  HDC dc = CreateICA("WINSPOOL", name, nullptr, nullptr);
  const PageSize page = {GetDeviceCaps(dc, HORZRES), GetDeviceCaps(dc, VERTRES), GetDeviceCaps(dc, LOGPIXELSX)};
  DeleteDC(dc);
  return page;
}

PrintedPage takePrintedPage() {
  PrintedPage page;
  const ScratchFolder folder;
  const std::string pdf = "'" + folder.unixFile("page.pdf") + "'";
  const ShellResult taken = shell("\"$ZAVO_PRINTER\" --take " + pdf + " && pdfinfo " + pdf);
  if (taken.exitCode != 0) {
    page.trouble = taken.output;
    return page;
  }
  page.pages = std::atoi(wordAfter(taken.output, "Pages:").c_str());
  page.title = wordAfter(taken.output, "Title:");
  const ShellResult drawn =
      shell("pdftoppm -singlefile -aa no -aaVector no -r " + std::to_string(defaultPageSize().dpi) + " " + pdf + " '" +
            folder.unixFile("page") + "'");
  page.trouble = drawn.output;
  page.picture = readPixmap(folder.file("page.ppm"));
  return page;
}

}  // namespace zavotest
