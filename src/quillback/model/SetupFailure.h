#pragma once

#include <string>
#include <system_error>

#include <tl/expected.hpp>

namespace voxtrel::quillback {

/// The exit status of `quillback setup`.
enum class SetupExit {
  done = 0,
  usage = 2,        ///< unknown model, or a wrong address in QUILLBACK_MODEL_URL
  network = 3,      ///< the server cannot be reached, or the connection failed
  http = 4,         ///< the server replied without the file
  noSpace = 5,      ///< not enough free space
  unwritable = 6,   ///< the store cannot be written
  wrongFile = 7,    ///< the downloaded file is not the expected one
  locked = 8,       ///< the store cannot be locked
  interrupted = 9,  ///< by a signal
};

/// Why setup failed.
struct SetupFailure {
  SetupExit exit = SetupExit::network;
  std::string line;  ///< for the user: what happened and what to do
};

using SetupResult = tl::expected<void, SetupFailure>;

/// The failure for a system error with a file in `folder`; `operation_canceled` gives
/// `interruption`. `isKept`: what has arrived stays there.
SetupFailure fileFailure(std::error_code error, const std::string& folder, bool isKept = true);

/// The failure for a requested stop.
SetupFailure interruption(bool isKept = true);

}  // namespace voxtrel::quillback
