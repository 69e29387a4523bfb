#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "voxtrel/platform/ChildProcess.h"
#include "voxtrel/platform/posix/ChildLifetime.h"
#include "voxtrel/platform/posix/OutputReader.h"

namespace voxtrel {

/// One child from its making to the report of its end: `begin`, `listen` and `watch`, in this order.
/// Thread: one after the other.  Owns: the child's options, the thread that reads its output.
class ChildSupervision {
 public:
  explicit ChildSupervision(ChildOptions options) : options_(std::move(options)) {}

  /// Makes the child, which ends with the calling thread.
  /// Fails by: throwing std::system_error.
  std::shared_ptr<ChildProcess> begin();

  /// Begins to read what the child writes. If that cannot be, the child is ended.
  void listen();

  /// The work of the child's termination thread: returns when the exit has been reported.
  void watch();

  /// Instead of `watch`, where there is no thread for it: ends the child and reports nothing more.
  void abandon();

 private:
  const ChildOptions options_;
  std::optional<OutputReader> reader_;
  std::shared_ptr<ChildLifetime> lifetime_;
};

}  // namespace voxtrel
