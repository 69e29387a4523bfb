#pragma once

#include <span>
#include <string>
#include <string_view>

namespace voxtrel::quillback {

/// The exit status of `quillback setup`.
enum class SetupExit {
  done = 0,
  usage = 2,
  network = 3,
  http = 4,
  noSpace = 5,
  unwritable = 6,
  wrongFile = 7,
  locked = 8,
  interrupted = 9,
};

/// Why setup ended without its aim, as one line for people.
struct SetupFailure {
  SetupExit exit = SetupExit::network;
  std::string line;  ///< what happened and what to do
};

struct SetupExitMeaning {
  SetupExit exit;
  std::string_view meaning;
};

/// Every status with what it means, in ascending order; for --help and the manual.
std::span<const SetupExitMeaning> setupExits();

/// The failure for a system error while a file of `folder` was written.
SetupFailure writeFailure(int error, const std::string& folder);
/// The failure for somebody's wish that setup end.
SetupFailure interruption();

}  // namespace voxtrel::quillback
