#include <cstdio>
#include <span>

#include "app/CommandLine.h"
#include "app/RunCommand.h"
#include "app/SetupCommand.h"
#include "app/StandardDescriptors.h"
#include "app/TranscribeCommand.h"

using namespace quillback;

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
      return std::fputs(helpText().c_str(), stdout) < 0 ? 1 : 0;
    case CommandLine::Command::version:
      return std::printf("quillback %s\n", engineVersion().c_str()) < 0 ? 1 : 0;
    case CommandLine::Command::usageError:
      break;
  }
  std::fprintf(stderr, "quillback: %s\nTry \"quillback --help\".\n", line.mistake.c_str());
  return 2;
}
