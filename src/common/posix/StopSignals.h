#pragma once

#include <chrono>
#include <csignal>
#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

#include "common/posix/Pipe.h"

namespace voxtrel {

/// Turns SIGTERM, SIGINT and SIGHUP into a pollable stop request. One object at a time.
/// Thread: one; the handlers run on any.  Owns: the process's handling of these signals, which the
/// destructor restores; a request that was not taken is dropped then.
/// Fails by: ending the process where no pipe can be made.
class StopSignals {
 public:
  /// What happens to SIGINT and SIGHUP if the process was started with them ignored, as by "nohup"
  /// or by "&" in a script. An inherited ignore of SIGTERM never counts.
  enum class InheritedIgnores { keep, replace };

  /// `alsoIgnored`: signals to ignore as long as this lives, such as SIGPIPE.
  explicit StopSignals(InheritedIgnores inherited, std::initializer_list<int> alsoIgnored = {});
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals();

  /// Readable while a request is not taken.
  int descriptor() const { return requests_.readEnd.get(); }
  bool isRequested() const { return waitFor(std::chrono::milliseconds(0)); }
  /// Blocks until stop is requested or the time is over; returns whether it is requested.
  bool waitFor(std::chrono::milliseconds limit) const;

  /// Takes the oldest request and returns its signal; none if there is no request. Never blocks.
  std::optional<int> take();

 private:
  void handle(int signal, void (*handler)(int));

  Pipe requests_;
  std::vector<std::pair<int, struct sigaction>> actionsBefore_;
  sigset_t maskBefore_{};
};

}  // namespace voxtrel
