#pragma once

#include <sys/types.h>

#include <memory>
#include <system_error>

#include <tl/expected.hpp>

#include "voxtrel/platform/ChildProcess.h"

namespace voxtrel {

/// Ends one child with its application, however that ends. To be destroyed when the child has ended and
/// is not reaped yet, so that its id still is its own.
/// Thread: one at a time.
class ChildTether {
 public:
  virtual ~ChildTether() = default;

  /// To be called in the child between fork and exec, perhaps in the parent's memory: allocates
  /// nothing and takes no lock. `parent`: the application. False: the child must not run, errno says
  /// why.
  virtual bool attach(pid_t parent) noexcept = 0;
};

struct SpawnedChild {
  pid_t pid = 0;
  std::shared_ptr<ChildTether> tether;
};

/// Starts the program of `options` with both output streams going to the descriptor `output`, which
/// must not be a standard one. Returns once the program runs. Where `livesAsLongAsProcess` says no for
/// the calling thread, the child is killed when that thread ends.
tl::expected<SpawnedChild, std::error_code> spawnChild(const ChildOptions& options, int output);

// What each system does its own way; defined in the system's folder.

/// The tether of the next child.
tl::expected<std::shared_ptr<ChildTether>, std::error_code> makeTether();

/// Makes the next exec close every descriptor above the standard three. Runs between fork and exec, as
/// `attach` does.
void closeDescriptorsOnExec() noexcept;

/// Whether the calling thread lives as long as its process, so that its children may too.
bool livesAsLongAsProcess() noexcept;

}  // namespace voxtrel
