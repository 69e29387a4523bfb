#include "common/settings/TextFile.h"

#include <array>
#include <exception>
#include <filesystem>
#include <fstream>

#include "common/base/Utf8.h"

namespace voxtrel {
namespace {

std::optional<std::string> readBytes(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string bytes;
  std::array<char, 4096> piece{};
  do {
    file.read(piece.data(), piece.size());
    bytes.append(piece.data(), static_cast<std::size_t>(file.gcount()));
  } while (file);
  if (file.bad()) return std::nullopt;
  return bytes;
}

bool writeBytes(const std::string& path, std::string_view bytes) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return false;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return false;
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (file) return true;
  std::filesystem::remove(path, error);
  return false;
}

}  // namespace

std::optional<std::string> readTextFile(const std::string& path) noexcept {
  try {
    std::optional<std::string> bytes = readBytes(path);
    if (bytes && !isValidUtf8(*bytes)) bytes.reset();
    return bytes;
  } catch (const std::exception&) {  // no memory for it: as good as unreadable
    return std::nullopt;
  }
}

bool writeTextFile(const std::string& path, std::string_view text) noexcept {
  try {
    return writeBytes(path, text);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace voxtrel
