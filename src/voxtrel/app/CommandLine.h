#pragma once

#include <span>
#include <string>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

/// What the command line asks for.
struct CommandLine {
  enum class Request { run, printAndExit, usageError };
  Request request = Request::run;
  StartRequest start = StartRequest::open;  ///< of `run`
  std::string text;  ///< to print: a usage error on standard error, else on standard output
};

/// The version of this build, such as "0.1.0".
std::string applicationVersion();

/// Reads the arguments after the program's name.
CommandLine parseCommandLine(std::span<const char* const> arguments);

}  // namespace voxtrel
