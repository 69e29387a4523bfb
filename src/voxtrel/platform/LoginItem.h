#pragma once

namespace voxtrel {

/// Whether the desktop starts the application when the user logs in.
/// Thread: the main thread.
class LoginItem {
 public:
  virtual ~LoginItem() = default;

  /// Asked afresh on every call.
  virtual bool isEnabled() const = 0;
  /// Both are true once the desktop will do so, which includes that it did already.
  [[nodiscard]] virtual bool enable() = 0;
  [[nodiscard]] virtual bool disable() = 0;
};

}  // namespace voxtrel
