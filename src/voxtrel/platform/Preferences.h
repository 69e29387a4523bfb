#pragma once

#include <string_view>

namespace voxtrel {

/// Whether the desktop starts the application when the user logs in.
/// Thread: the main thread.
class LoginItem {
 public:
  virtual ~LoginItem() = default;

  /// Checked on every call.
  virtual bool isEnabled() const = 0;
  /// These two return whether it now is as asked, also when it already was.
  [[nodiscard]] virtual bool enable() = 0;
  [[nodiscard]] virtual bool disable() = 0;
  /// Enables it unless the user or the desktop has decided about it; returns whether it is enabled.
  [[nodiscard]] virtual bool restore() = 0;
};

/// Small values that the application keeps for its user between runs.
/// Thread: the main thread.
/// Fails by: reading false; not keeping what cannot be written.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  virtual bool boolForKey(std::string_view key) const = 0;  ///< false if never set
  virtual void setBool(std::string_view key, bool value) = 0;
};

}  // namespace voxtrel
