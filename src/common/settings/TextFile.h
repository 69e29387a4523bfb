#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

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

/// Replaces the file at `path`, or makes it: another process sees the old text or the new one, also after
/// a crash. The text is written to a draft beside the file, named like it with ".tmp" added; a file or
/// link with that name is removed first, never written to. Mode and owner stay, as far as this user may
/// set them. Where `path` is a link to a file, the link stays and the file is replaced; any other link
/// is replaced itself. Fails with the old file untouched and no draft left, also where a folder is at
/// `path`.
tl::expected<void, std::error_code> replaceTextFile(const std::string& path,
                                                    std::string_view text) noexcept;

}  // namespace voxtrel
