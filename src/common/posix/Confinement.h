#pragma once

#include <string>
#include <vector>

namespace voxtrel {

/// No core file of this process is written, nor handed to another program. Does nothing if the
/// environment has VOXTREL_CORE, for debugging.
void leaveNoCore();

/// Keeps what this process has in memory to itself: no core file is written, and no other program of the
/// user can read its memory or attach to it. The same exception holds. A program that it starts must do the
/// same again.
/// Thread: the main one.
void protectMemory();

/// While one of these lives, other programs may look at a protected process. Desktop portals refuse programs
/// that they cannot look at.
/// Thread: the main one.
class OpenToOthers {
 public:
  OpenToOthers();
  OpenToOthers(const OpenToOthers&) = delete;
  OpenToOthers& operator=(const OpenToOthers&) = delete;
  ~OpenToOthers();
};

/// Gives up, for this process and all that it starts, to gain rights by set-user-id programs, and where
/// the kernel has Landlock, to change anything in the file system outside `folders`. What is already open
/// stays usable. Missing folders are skipped.
/// Thread: the main one, before any other is started.
/// Fails by: false if the kernel does not limit the writing.
bool confineWriting(const std::vector<std::string>& folders);

}  // namespace voxtrel
