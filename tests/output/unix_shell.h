// Commands of the Unix system beneath Wine, for what only another program can tell.
#pragma once

#include <string>

namespace zavotest {

struct ShellResult {
  int exitCode = -1;
  std::string output;  // of both streams
};

// Runs a command line of sh and waits for its end, at most a minute. Paths can be given by unixPath().
ShellResult shell(const std::string& commands);

// The Unix name of a file; empty where there is no Unix beneath.
std::string unixPath(const std::string& windowsPath);

// A directory of its own, removed with its files at the end.
class ScratchFolder {
 public:
  ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();
  [[nodiscard]] std::string file(const std::string& name) const { return path_ + name; }
  [[nodiscard]] std::string unixFile(const std::string& name) const { return unixPath(file(name)); }

 private:
  std::string path_;
};

}  // namespace zavotest
