// zv: a command-line client of the library. This file finds the command and turns its end into an exit code:
// 0 done, 1 failed, 2 the command line makes no sense.
#include <cstdio>
#include <exception>
#include <objbase.h>
#include <span>
#include <string>
#include <vector>
#include <windows.h>

#include "command.h"
#include "common/errors.h"
#include "common/text.h"
#include "progress.h"

namespace zv {

namespace {

std::span<const Command* const> commands() {
  static const Command* const all[] = {&infoCommand,  &convertCommand,  &regionCommand,  &paintCommand,
                                       &grayCommand,  &halftoneCommand, &combineCommand, &underlayCommand,
                                       &alphaCommand, &playCommand,     &printCommand,   &copyCommand,
                                       &pasteCommand, &captureCommand};
  return all;
}

const Command& findCommand(const std::string& name) {
  for (const Command* command : commands())
    if (name == command->name) return *command;
  throw UsageError("there is no command '" + name + "' (zv --help lists them)");
}

void printHelp() {
  std::puts("usage: zv COMMAND ...\n\ncommands:");
  for (const Command* command : commands()) std::printf("  %-10s%s\n", command->name, command->summary);
  std::puts(
      "\n"
      "zv COMMAND --help tells more. Pictures are read from PNG, JPEG, BMP, TIFF and GIF files and written as PNG or\n"
      "BMP, as the name ends. --progress shows a progress line even when stderr is no terminal.\n"
      "Exit codes: 0 done, 1 failed, 2 wrong command line.");
}

void printHelp(const Command& command) {
  std::printf("usage: zv %s %s\n\n%s\n", command.name, command.synopsis, command.summary);
  if (command.help != nullptr) std::printf("\n%s", command.help().c_str());
}

void run(std::vector<std::string> words) {
  Arguments arguments(std::move(words));
  enableProgress(arguments.remove("--progress"));
  const bool helpWanted = arguments.remove("--help");
  if (arguments.empty()) {
    printHelp();
    if (!helpWanted) throw UsageError("no command given");
    return;
  }
  const Command& command = findCommand(arguments.takeOperand("the command"));
  if (helpWanted)
    printHelp(command);
  else
    command.run(arguments);
}

int runToExitCode(std::vector<std::string> words) {
  const auto complain = [](const char* text) { std::fprintf(stderr, "zv: %s\n", text); };
  try {
    run(std::move(words));
    return 0;
  } catch (const UsageError& error) {
    complain(error.what());
    return 2;
  } catch (const std::exception& error) {
    complain(error.what());
    return 1;
  }
}

}  // namespace

}  // namespace zv

int wmain(int count, wchar_t** words) {
  std::vector<std::string> arguments;
  for (int i = 1; i < count; i++) arguments.push_back(zv::narrow(words[i]));
  const HRESULT com = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const int exitCode = zv::runToExitCode(std::move(arguments));
  if (SUCCEEDED(com)) CoUninitialize();
  return exitCode;
}
