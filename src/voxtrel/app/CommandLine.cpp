#include "voxtrel/app/CommandLine.h"

#include <optional>
#include <string_view>

namespace voxtrel {
namespace {

constexpr std::string_view kHelp =
    "Usage: voxtrel [OPTION]\n"
    "Shows and controls the speech-to-text engine quillback in the desktop's tray.\n"
    "\n"
    "  --settings  open the settings, and start the program if it does not run\n"
    "  --restart   restart the engine of the running program\n"
    "  --quit      end the running program\n"
    "  --help      print this help and exit\n"
    "  --version   print the version and exit\n"
    "\n"
    "Environment:\n"
    "  VOXTREL_LOG=debug        also log the engine's lines, without the dictated words\n"
    "  VOXTREL_LOG=debug,words  also log the dictated words\n";

std::optional<StartRequest> startRequest(std::string_view argument) {
  if (argument == "--settings") return StartRequest::settings;
  if (argument == "--restart") return StartRequest::restart;
  if (argument == "--quit") return StartRequest::quit;
  return std::nullopt;
}

}  // namespace

std::string applicationVersion() {
  return VOXTREL_VERSION;
}

CommandLine parseCommandLine(std::span<const char* const> arguments) {
  using Request = CommandLine::Request;
  CommandLine commandLine;
  for (const std::string_view argument : arguments) {
    if (argument == "--help") {
      return {.request = Request::printAndExit, .text = std::string(kHelp)};
    }
    if (argument == "--version") {
      return {.request = Request::printAndExit, .text = "voxtrel " + applicationVersion() + "\n"};
    }
    const auto start = startRequest(argument);
    if (!start) {
      return {.request = Request::usageError,
              .text = "voxtrel: unknown argument \"" + std::string(argument) +
                      "\"\nTry \"voxtrel --help\".\n"};
    }
    commandLine.start = *start;
  }
  return commandLine;
}

}  // namespace voxtrel
