#pragma once

#include <future>
#include <system_error>
#include <utility>

#include "platform/ChildProcess.h"

namespace voxtrel {

/// One child from its making to the report of its end: the work of its termination thread. That
/// thread makes the child itself, because a child ends with the thread that made it.
/// Thread: `run` on the termination thread, `started` on one other.  Owns: the child's options.
/// Fails by: the result of `started`.
class ChildSupervision {
 public:
  using Result = ChildProcessLauncher::Result;

  explicit ChildSupervision(ChildOptions options) : options_(std::move(options)) {}

  /// The outcome of the start, once `run` has got that far. To be called once.
  std::future<Result> started() { return started_.get_future(); }

  /// Starts the child, and returns when its exit has been reported or its start has failed.
  void run();

  /// "Cannot start PATH: REASON"
  LaunchFailure failure(const std::error_code& reason) const;

 private:
  const ChildOptions options_;
  std::promise<Result> started_;
};

}  // namespace voxtrel
