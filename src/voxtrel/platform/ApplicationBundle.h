#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace voxtrel {

/// Where the application's own files are.
/// Thread: any.
class ApplicationBundle {
 public:
  virtual ~ApplicationBundle() = default;

  /// Path of the file `name` in the folder that holds the application's own executable (links
  /// followed), if there is one.
  virtual std::optional<std::string> auxiliaryExecutable(std::string_view name) const = 0;
};

}  // namespace voxtrel
