#pragma once

#include <span>
#include <string>

namespace voxtrel::quillback {

/// What the command line asks for.
struct CommandLine {
  enum class Command { run, setup, transcribe, help, version, usageError };

  Command command = Command::usageError;
  std::string argument;  ///< setup: the model's name; transcribe: the file's
  std::string mistake;   ///< usageError: what is wrong, in one line
};

/// The version of this build, such as "0.1.0".
std::string engineVersion();

/// What `--help` prints.
std::string helpText();

/// Reads the arguments after the program's name.
CommandLine parseCommandLine(std::span<const char* const> arguments);

}  // namespace voxtrel::quillback
