#pragma once

#include <span>
#include <string>
#include <vector>

#include <tl/expected.hpp>

namespace voxtrel::quillback {

/// The parsed command line.
struct CommandLine {
  /// `recognise`, `advise` and `microphone` are how the engine starts its own processes; no user does.
  enum class Command {
    run,
    setup,
    models,
    use,
    remove,
    transcribe,
    retry,
    check,
    key,
    ask,
    recognise,
    advise,
    microphone,
    help,
    version
  };

  Command command = Command::help;
  std::string
      argument;  ///< setup, use, remove: the model's name; transcribe: the file; key: the word
  std::string file = {};               ///< setup: the user's own weights; may be empty
  bool isJson = false;                 ///< models
  std::vector<std::string> rest = {};  ///< recognise: which recogniser; microphone
};

/// The version of this build, such as "0.1.0".
std::string engineVersion();

/// What `--help` prints.
std::string helpText();

/// Parses the arguments after the program's name.
/// Fails by: one line that says what is wrong.
tl::expected<CommandLine, std::string> parseCommandLine(std::span<const char* const> arguments);

}  // namespace voxtrel::quillback
