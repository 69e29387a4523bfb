#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "support/macos/whole/EngineFolder.h"

namespace voxtrel::testing {

/// The application's own program in a bundle, with a scripted engine beside it and a user who grants
/// what it asks for.
/// Thread: the main thread, whose run loop runs while this waits.  Owns: the process, which ends with this.
class RunningProgram {
 public:
  RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram();

  const EngineFolder& files() const { return files_; }

  /// `environment`: variables beside its home, such as "NAME=value".
  void start(const std::vector<std::string>& environment = {},
             const std::vector<std::string>& arguments = {});
  void signal(int number) const;
  /// Lets the user choose a row of the menu.
  void choose(const std::string& row) const;

  /// The exit code or signal once it has ended; none if it still runs after `limit`.
  std::optional<int> end(std::chrono::milliseconds limit = std::chrono::seconds(10));
  /// Everything printed and logged so far.
  std::string said() const;

  /// Ids of all processes with the program's home, without the rig's own daemons.
  std::vector<pid_t> family() const;

 private:
  std::vector<std::string> wholeEnvironment(const std::vector<std::string>& added) const;

  const EngineFolder files_;
  pid_t pid_ = 0;
};

}  // namespace voxtrel::testing
