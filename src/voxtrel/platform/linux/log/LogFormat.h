#pragma once

#include <array>
#include <string>
#include <string_view>

#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// A message as one line for a terminal or a file, with its newline. Control characters are escaped,
/// so that it stays one line and cannot send commands to a terminal.
std::string logLine(LogLevel level, std::string_view category, std::string_view message);

/// A message as the journal stores it, each field as "NAME=value". SUBSYSTEM is the application's
/// identifier.
std::array<std::string, 4> journalFields(LogLevel level, std::string_view category,
                                         std::string_view message);

}  // namespace voxtrel
