#include "voxtrel/platform/posix/ExecutablePath.h"

#include <filesystem>
#include <system_error>

namespace voxtrel {

std::string executablePath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

}  // namespace voxtrel
