#pragma once

#include <string_view>

namespace voxtrel {

/// Small values that the application keeps for its user from one run to the next.
/// Thread: the main thread.
/// Fails by: false for what cannot be read, forgetting what cannot be written.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  virtual bool boolForKey(std::string_view key) const = 0;  ///< false where nothing was set
  virtual void setBool(std::string_view key, bool value) = 0;
};

}  // namespace voxtrel
