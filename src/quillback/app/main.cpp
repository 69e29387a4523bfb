#include <cstdio>
#include <span>
#include <string>

#include "quillback/app/CommandLine.h"
#include "quillback/app/RunCommand.h"
#include "quillback/app/SetupCommand.h"
#include "quillback/app/StandardDescriptors.h"
#include "quillback/app/TranscribeCommand.h"

using namespace voxtrel::quillback;

namespace {

/// Prints for a command that does nothing else; returns the exit status.
int show(const std::string& text) {
  return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  keepStandardDescriptorsOpen();
  const std::span words(arguments, static_cast<std::size_t>(argumentCount));
  const CommandLine line = parseCommandLine(words.subspan(words.empty() ? 0 : 1));
  switch (line.command) {
    case CommandLine::Command::run:
      return runEngine();
    case CommandLine::Command::setup:
      return setUpModel(line.argument);
    case CommandLine::Command::transcribe:
      return printTranscript(line.argument);
    case CommandLine::Command::help:
      return show(helpText());
    case CommandLine::Command::version:
      return show("quillback " + engineVersion() + "\n");
    case CommandLine::Command::usageError:
      break;
  }
  std::fprintf(stderr, "quillback: %s\nTry \"quillback --help\".\n", line.mistake.c_str());
  return 2;
}
