#include "config/TextFile.h"

#include <array>
#include <exception>
#include <filesystem>
#include <fstream>

#include "text/Utf8.h"

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

}  // namespace voxtrel
