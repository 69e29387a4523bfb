#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tl/expected.hpp>

namespace voxtrel {

/// How to start a child process. It always inherits the environment, and gets default signal
/// handlers, an empty signal mask and no descriptors except the standard three.
struct ChildOptions {
  std::string executable;              ///< path of the program file
  std::vector<std::string> arguments;  ///< without the program's own name
  std::string workingDirectory;        ///< empty: the application's
  /// The bytes of one read from standard output and standard error, interleaved as written; never
  /// empty; valid during the call. Called on a thread that only reads this child.
  std::function<void(std::string_view bytes)> onOutput;
  /// Called once, on another thread, after `onOutput` has had every byte that the child wrote before
  /// its end. Nothing is reported afterwards.
  /// `status`: the exit code, or the number of the signal that ended it.
  std::function<void(int status)> onExit;
};

/// A started child. Destroying it ends the child (SIGKILL) if it still runs.
/// Thread: any.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  /// False once the child has ended, even if some output is not reported yet.
  virtual bool isRunning() const = 0;

  /// Asks the child to end (SIGTERM); nothing happens if it has ended.
  virtual void terminate() = 0;

  /// Ends the child (SIGKILL); nothing happens if it has ended.
  virtual void kill() = 0;

  /// Blocks until the child has ended and is reaped.
  virtual void waitUntilExit() = 0;
};

/// Starts child processes. They end with the application, however it ends.
/// Thread: any; several starts may overlap.
class ChildProcessLauncher {
 public:
  /// The child, or a message for the user that says why it could not be started.
  using Result = tl::expected<std::shared_ptr<ChildProcess>, std::string>;

  virtual ~ChildProcessLauncher() = default;

  /// Returns once the program runs in the child or could not be started; then neither callback is
  /// ever called. Output and exit may be reported before this returns.
  [[nodiscard]] virtual Result start(ChildOptions options) = 0;
};

}  // namespace voxtrel
