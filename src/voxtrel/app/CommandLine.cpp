#include "voxtrel/app/CommandLine.h"

#include <string_view>

namespace voxtrel {
namespace {

constexpr std::string_view kHelp =
    "Usage: voxtrel [OPTION]\n"
    "Shows and controls the speech-to-text engine quillback in the desktop's tray.\n"
    "\n"
    "  --help     print this help and exit\n"
    "  --version  print the version and exit\n"
    "\n"
    "Environment:\n"
    "  VOXTREL_LOG=debug        also log the engine's lines, without the dictated words\n"
    "  VOXTREL_LOG=debug,words  also log the dictated words\n";

}  // namespace

std::string applicationVersion() {
  return VOXTREL_VERSION;
}

CommandLine parseCommandLine(std::span<const char* const> arguments) {
  using Request = CommandLine::Request;
  for (const std::string_view argument : arguments) {
    if (argument == "--help") return {Request::printAndExit, std::string(kHelp)};
    if (argument == "--version") {
      return {Request::printAndExit, "voxtrel " + applicationVersion() + "\n"};
    }
    return {Request::usageError, "voxtrel: unknown argument \"" + std::string(argument) +
                                     "\"\nTry \"voxtrel --help\".\n"};
  }
  return {Request::run, ""};
}

}  // namespace voxtrel
