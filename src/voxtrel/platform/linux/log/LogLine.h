#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// A message as one line of text for a terminal or a file, with its newline. Control characters in
/// the message are written as escapes, so that it stays one line and commands no terminal.
std::string logLine(LogLevel level, std::string_view category, std::string_view message);

/// What the environment variable VOXTREL_LOG asks for.
struct LogVerbosity {
  LogLevel lowest = LogLevel::info;
  std::optional<std::string> complaint;  ///< about a value that means nothing

  /// `value`: null where the variable is not set.
  static LogVerbosity parse(const char* value);
};

/// Whether JOURNAL_STREAM, as `value`, names this device and inode: then standard error goes to the
/// journal. `value`: null where the variable is not set.
bool namesStream(const char* value, unsigned long long device, unsigned long long inode);

}  // namespace voxtrel
