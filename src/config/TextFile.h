#pragma once

#include <optional>
#include <string>

namespace voxtrel {

/// The bytes of a UTF-8 text file; links are followed. Nothing if it is missing, unreadable, not a
/// regular file (a FIFO is not waited for) or not well-formed UTF-8. Never throws.
std::optional<std::string> readTextFile(const std::string& path) noexcept;

}  // namespace voxtrel
