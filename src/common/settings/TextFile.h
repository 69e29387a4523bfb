#pragma once

#include <cstddef>
#include <limits>
#include <string>

#include <tl/expected.hpp>

namespace voxtrel {

/// Why a file's text could not be read.
struct TextFileError {
  bool isMissing = false;  ///< there is no such file
  std::string reason;      ///< for people, such as "it is not a regular file"
};

/// Reads a whole UTF-8 text file; links are followed. It must be a regular file, so this never waits
/// for a FIFO or a device.
tl::expected<std::string, TextFileError> readTextFile(
    const std::string& path,
    std::size_t maxBytes = std::numeric_limits<std::size_t>::max()) noexcept;

}  // namespace voxtrel
