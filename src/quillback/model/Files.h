#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// Length of the regular file `path` (also through a symbolic link); nothing where there is none.
std::optional<std::uint64_t> fileSize(const std::string& path);

/// The regular file's bytes, `maxBytes` of them at most; nothing where it cannot be read.
std::optional<std::string> readSmallFile(const std::string& path, std::size_t maxBytes);

/// Bytes that this user can still write below `folder`; nothing where that is not known.
std::optional<std::uint64_t> freeSpace(const std::string& folder);

// These return 0 or the system's error number.

/// Makes `folder` and those above it that are missing.
[[nodiscard]] int makeFolders(const std::string& folder);
/// Makes a rename or a removal in `folder` last.
[[nodiscard]] int syncFolder(const std::string& folder);
/// Removes a file; one that is not there is no error.
[[nodiscard]] int removeFile(const std::string& path);
/// Puts `text` in the place of folder/name: whoever looks sees the old file or the whole new one.
[[nodiscard]] int replaceFile(const std::string& folder, const std::string& name,
                              std::string_view text);

}  // namespace voxtrel::quillback
