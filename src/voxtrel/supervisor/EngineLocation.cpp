#include "voxtrel/supervisor/EngineLocation.h"

#include <filesystem>
#include <system_error>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

std::string binaryPath(const ApplicationBundle& bundle) {
  return bundle.auxiliaryExecutable("quillback").value_or("/usr/local/bin/quillback");
}

bool fileExists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

}  // namespace voxtrel
