#include "common/settings/TextFile.h"

#include <array>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "common/base/Utf8.h"

namespace voxtrel {
namespace {

namespace fs = std::filesystem;

using Text = tl::expected<std::string, TextFileError>;

Text failure(std::string reason) {
  return tl::unexpected(TextFileError{false, std::move(reason)});
}

Text unreadable(const std::error_code& error) {
  return failure("it cannot be read (" + error.message() + ")");
}

Text readRegularFile(const std::string& path, std::size_t maxBytes) {
  const auto systemError = [] { return std::error_code(errno, std::generic_category()); };
  std::ifstream file(path, std::ios::binary);
  if (!file) return unreadable(systemError());
  std::string bytes;
  std::array<char, 4096> piece{};
  do {
    file.read(piece.data(), piece.size());
    bytes.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > maxBytes) return failure("it is too long to be settings");
  } while (file);
  if (file.bad()) return unreadable(systemError());
  if (!isValidUtf8(bytes)) return failure("it is not UTF-8 text");
  return bytes;
}

Text read(const std::string& path, std::size_t maxBytes) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) {
    return tl::unexpected(TextFileError{true, "it does not exist"});
  }
  if (error) return unreadable(error);
  if (!fs::is_regular_file(status)) return failure("it is not a regular file");
  return readRegularFile(path, maxBytes);
}

}  // namespace

Text readTextFile(const std::string& path, std::size_t maxBytes) noexcept {
  try {
    return read(path, maxBytes);
  } catch (const std::exception&) {
    return failure("out of memory");  // short enough to need none
  }
}

}  // namespace voxtrel
