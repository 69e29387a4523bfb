#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "voxtrel/platform/posix/ChildRecord.h"
#include "voxtrel/platform/posix/PosixChildProcessLauncher.h"
#include "voxtrel/platform/posix/Waiting.h"

namespace voxtrel {

using Words = std::vector<std::string>;

/// A child and what it reported.
struct StartedChild {
  std::shared_ptr<ChildRecord> record = std::make_shared<ChildRecord>();
  std::shared_ptr<ChildProcess> process;  ///< null: the start failed
  std::string failure;                    ///< the reason, if the start failed
};

/// Starts children through the real adapter.
class ChildTest : public testing::Test {
 protected:
  /// Starts `executable`; it may fail.
  StartedChild start(const std::string& executable, const Words& words,
                     const std::string& folder = "");

  /// Starts the scripted engine, which must succeed.
  StartedChild engine(const Words& commands);

  /// Waits until an engine has done `commands`; returns its status, or what it printed.
  std::optional<int> statusOf(const Words& commands);
  std::string outputOf(const Words& commands);

  PosixChildProcessLauncher launcher_;
};

}  // namespace voxtrel
