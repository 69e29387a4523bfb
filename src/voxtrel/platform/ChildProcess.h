#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tl/expected.hpp>

namespace voxtrel {

/// How to start a child process. Environment and signal state are not chosen: the child inherits
/// the environment, gets default signal dispositions and an empty mask, and no descriptor but the
/// standard three.
struct ChildOptions {
  std::string executable;              ///< path of the program file
  std::vector<std::string> arguments;  ///< without the program's own name
  std::string workingDirectory;        ///< empty: the application's
  /// Bytes of standard output and standard error, interleaved as written. Called on a thread of the
  /// child's own with whatever one read gave, never empty; valid during the call only.
  std::function<void(std::string_view bytes)> onOutput;
  /// Called once on another thread of the child's, after the last byte that the child wrote before
  /// its end has gone to `onOutput`. Nothing is reported afterwards.
  /// `status`: the exit code, or the number of the signal that ended it.
  std::function<void(int status)> onExit;
};

/// A child that was started. Destroying it ends the child (SIGKILL) if it still runs.
/// Thread: any.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  /// False once the child has ended, however much of its output is still to be reported.
  virtual bool isRunning() const = 0;

  /// Asks the child to end (SIGTERM); nothing happens if it has ended.
  virtual void terminate() = 0;

  /// Ends the child (SIGKILL); nothing happens if it has ended.
  virtual void kill() = 0;

  /// Blocks until the child has ended and is reaped.
  virtual void waitUntilExit() = 0;
};

/// Starts child processes, which end with the application however it ends.
/// Thread: any; several starts may overlap.
class ChildProcessLauncher {
 public:
  /// The child, or a message for the user that says why it could not be started.
  using Result = tl::expected<std::shared_ptr<ChildProcess>, std::string>;

  virtual ~ChildProcessLauncher() = default;

  /// Returns once the program runs in the child, or could not be started (then neither callback is
  /// ever called). Output and exit may be reported before this returns.
  [[nodiscard]] virtual Result start(ChildOptions options) = 0;
};

}  // namespace voxtrel
