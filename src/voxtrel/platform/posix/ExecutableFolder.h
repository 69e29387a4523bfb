#pragma once

#include <string>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

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
