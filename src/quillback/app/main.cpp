#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <span>
#include <string>

#include "quillback/app/CommandLine.h"
#include "quillback/app/Commands.h"

using namespace voxtrel::quillback;

namespace {

/// Opens /dev/null for each standard descriptor that is closed. Otherwise the next opened file
/// would take its number and get what is meant for it.
void openStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // `open` returns the lowest free number, which is this one.
    if (::fcntl(fd, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
  }
}

/// Returns the exit status.
int show(const std::string& text) {
  return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  openStandardDescriptors();
  const std::span words(arguments, static_cast<std::size_t>(argumentCount));
  const auto line = parseCommandLine(words.subspan(words.empty() ? 0 : 1));
  if (!line) {
    std::fprintf(stderr, "quillback: %s\nTry \"quillback --help\".\n", line.error().c_str());
    return 2;
  }
  switch (line->command) {
    case CommandLine::Command::run:
      return runEngine();
    case CommandLine::Command::setup:
      return setUpModel(line->argument, line->file);
    case CommandLine::Command::models:
      return printModels(line->isJson);
    case CommandLine::Command::use:
      return chooseModel(line->argument);
    case CommandLine::Command::remove:
      return removeStoredModel(line->argument);
    case CommandLine::Command::transcribe:
      return printTranscript(line->argument);
    case CommandLine::Command::retry:
      return retryKeptTakes();
    case CommandLine::Command::recognise:
      return serveRecogniserCommand(line->rest);
    case CommandLine::Command::help:
      return show(helpText());
    case CommandLine::Command::version:
      break;
  }
  return show("quillback " + engineVersion() + "\n");
}
