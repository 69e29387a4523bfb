#pragma once

namespace voxtrel {

/// Hears of the application's life cycle.
/// Thread: the main thread.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  virtual void applicationDidFinishLaunching() = 0;
  /// The last call before the application ends, however it was asked to.
  virtual void applicationWillTerminate() = 0;
  /// The system asks the application to quit (a signal, the end of the session).
  virtual void quitRequested() = 0;
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

}  // namespace voxtrel
