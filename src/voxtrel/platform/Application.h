#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace voxtrel {

/// What the user wants by starting the application, also while it runs.
enum class StartRequest { open, settings, restart, quit };

/// Receives the events of the application's life cycle.
/// Thread: the main thread.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  virtual void applicationDidFinishLaunching() = 0;
  /// The last call before the application ends, for whatever reason.
  virtual void applicationWillTerminate() = 0;
  /// The system asks the application to quit (a signal, the end of the session).
  virtual void quitRequested() = 0;
  /// The user has started the application again. Its open windows come forward by themselves.
  virtual void reopenRequested() = 0;
  /// The user wants the settings, now or as soon as there are any.
  virtual void settingsRequested() = 0;
  /// The user wants the engine restarted.
  virtual void restartRequested() = 0;
};

/// The running application.
/// Thread: the main thread.
class Application {
 public:
  virtual ~Application() = default;

  /// Runs until `terminate`; returns the process's exit status.
  virtual int run(ApplicationDelegate& delegate) = 0;
  virtual void terminate() = 0;
};

/// Finds the application's own files.
/// Thread: any.
class ApplicationBundle {
 public:
  virtual ~ApplicationBundle() = default;

  /// Path of the file `name` in the folder of the application's executable (links followed); empty
  /// if there is none.
  virtual std::optional<std::string> auxiliaryExecutable(std::string_view name) const = 0;
};

/// Looks for a newer version of the application and shows the user the result.
/// Thread: the main thread.
class Updater {
 public:
  /// The menu's name for `checkForUpdates`, for a platform whose updater is a menu row's target.
  static constexpr const char* kCheckForUpdates = "checkForUpdates";

  virtual ~Updater() = default;

  virtual void checkForUpdates() = 0;
};

}  // namespace voxtrel
