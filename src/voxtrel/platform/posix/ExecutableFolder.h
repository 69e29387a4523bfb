#pragma once

#include <string>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

/// Absolute path of the running program's file, links followed; defined in the system's folder.
/// Fails by: empty text.
std::string executablePath();

/// The folder that holds the application's own executable.
/// Thread: any.
class ExecutableFolder : public ApplicationBundle {
 public:
  /// `applicationExecutable`: absolute path, links followed.
  explicit ExecutableFolder(const std::string& applicationExecutable);

  std::optional<std::string> auxiliaryExecutable(std::string_view name) const override;

 private:
  const std::string folder_;
};

}  // namespace voxtrel
