#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace voxtrel {

/// The bytes of a UTF-8 text file; links are followed. Nothing if it is missing, unreadable, not a
/// regular file (a FIFO is not waited for) or not well-formed UTF-8. Never throws.
std::optional<std::string> readTextFile(const std::string& path) noexcept;

/// Writes the bytes into the file at `path`, made where there is none; links are followed. False if
/// that failed: then nothing half written stays there, and what is no regular file stays untouched
/// (a FIFO is not waited for). Never throws.
bool writeTextFile(const std::string& path, std::string_view text) noexcept;

}  // namespace voxtrel
