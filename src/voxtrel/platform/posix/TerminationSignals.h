#pragma once

#include <array>
#include <csignal>
#include <optional>

#include "voxtrel/platform/posix/Pipe.h"

namespace voxtrel {

/// SIGTERM, SIGINT and SIGHUP turned into something that a main loop can watch, also where the
/// application inherited them ignored or blocked. One object at a time.
/// Thread: the main thread.  Owns: what these signals do, until its end.
/// Fails by: throwing std::system_error when it is made.
class TerminationSignals {
 public:
  TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;
  ~TerminationSignals();

  /// Readable when a signal has come and was not taken.
  int descriptor() const { return arrived_.readEnd.number(); }

  /// The next signal that has come; none if all were taken. Never blocks.
  std::optional<int> take();

 private:
  static constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

  Pipe arrived_;
  std::array<struct sigaction, kSignals.size()> before_{};
  sigset_t maskBefore_{};
};

}  // namespace voxtrel
