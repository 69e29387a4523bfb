#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "voxtrel/app/CommandLine.h"
#include "voxtrel/app/QuillbackApp.h"
#include "voxtrel/platform/Desktop.h"

namespace {

int print(const std::string& text, std::FILE* stream, int status) {
  std::fputs(text.c_str(), stream);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  using voxtrel::CommandLine;
  const std::span<const char* const> arguments(argv + 1, argv + argc);
  const CommandLine commandLine = voxtrel::parseCommandLine(arguments);
  switch (commandLine.request) {
    case CommandLine::Request::printAndExit:
      return print(commandLine.text, stdout, 0);
    case CommandLine::Request::usageError:
      return print(commandLine.text, stderr, 2);
    case CommandLine::Request::run:
      break;
  }

  const auto desktop =
      voxtrel::connectToDesktop(argc, argv, voxtrel::applicationVersion(), commandLine.start);
  if (!desktop) return desktop.error();
  return voxtrel::QuillbackApp(**desktop).run(commandLine.start);
}
