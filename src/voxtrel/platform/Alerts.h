#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace voxtrel {

/// A warning that the user must answer before anything goes on.
struct Alert {
  std::string messageText;
  std::string informativeText;
  /// From first to last as shown. Return chooses the first; Escape and the close box, where the
  /// desktop has them, choose the last.
  std::vector<std::string> buttons;
};

/// Modal alerts of warning style.
/// Thread: the main thread.
class Alerts {
 public:
  virtual ~Alerts() = default;

  /// `onAnswer` is called once, with the index of the button: before this returns where the desktop
  /// blocks, otherwise later. An alert that the application's end takes away is never answered.
  virtual void runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) = 0;
};

}  // namespace voxtrel
