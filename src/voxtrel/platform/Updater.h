#pragma once

namespace voxtrel {

/// Looks for a newer version of the application, showing the user what it finds.
/// Thread: the main thread.
class Updater {
 public:
  virtual ~Updater() = default;

  virtual void checkForUpdates() = 0;
};

}  // namespace voxtrel
