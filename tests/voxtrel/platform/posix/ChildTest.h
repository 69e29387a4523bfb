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

/// A child of the test with what it reported.
struct StartedChild {
  std::shared_ptr<ChildRecord> record = std::make_shared<ChildRecord>();
  std::shared_ptr<ChildProcess> process;  ///< null: it did not start
  std::string failure;                    ///< then why
};

/// Starts children through the real adapter.
class ChildTest : public testing::Test {
 protected:
  /// Starts `executable`; a failure is the test's to look at.
  StartedChild start(const std::string& executable, const Words& words,
                     const std::string& folder = "");

  /// Starts the scripted engine, which must succeed.
  StartedChild engine(const Words& commands);

  /// The engine's status once it has done `commands`, and what it printed.
  std::optional<int> statusOf(const Words& commands);
  std::string outputOf(const Words& commands);

  PosixChildProcessLauncher launcher_;
};

}  // namespace voxtrel
