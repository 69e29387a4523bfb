#include "voxtrel/platform/posix/ExecutableFolder.h"

#include <filesystem>
#include <system_error>

namespace voxtrel {

ExecutableFolder::ExecutableFolder(const std::string& applicationExecutable)
    : folder_(std::filesystem::path(applicationExecutable).parent_path().string()) {}

std::optional<std::string> ExecutableFolder::auxiliaryExecutable(std::string_view name) const {
  // Whether it may be executed shows when it is started, and that can say why not.
  const std::filesystem::path file = std::filesystem::path(folder_) / name;
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status) || std::filesystem::is_directory(status)) return {};
  return file.string();
}

}  // namespace voxtrel
