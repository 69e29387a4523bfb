#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace voxtrel {

/// A warning that the user must answer.
struct Alert {
  std::string messageText;
  std::string informativeText;
  /// In the order shown. Return chooses the first; Escape and the close box, where the desktop has
  /// them, choose the last.
  std::vector<std::string> buttons;
};

/// Modal alerts of warning style.
/// Thread: the main thread.
class Alerts {
 public:
  virtual ~Alerts() = default;

  /// Calls `onAnswer` once with the index of the button: before this returns if the desktop blocks,
  /// otherwise later. Not called if the application ends first.
  virtual void runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) = 0;
};

}  // namespace voxtrel
