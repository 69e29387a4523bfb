#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/FakeChildProcesses.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "voxtrel/supervisor/ProcessManager.h"

namespace voxtrel::testing {

/// A supervisor with everything around it under the test's control.
struct EngineFixture {
  ManualTime time;
  FakeBundle bundle;
  FakeLog log;
  FakeNotifications notifications;
  FakeLauncher launcher{time};
  std::shared_ptr<ProcessManager> manager = std::make_shared<ProcessManager>(ports());
  std::vector<AppState> heard;  // by the observer

  EngineFixture() {
    manager->setOnStateChange([this](AppState state) { heard.push_back(state); });
  }

  ProcessManagerPorts ports() {
    return {.bundle = bundle,
            .backgroundQueue = time,
            .childProcesses = launcher,
            .clock = time,
            .log = log,
            .mainLoop = time,
            .notifications = notifications};
  }

  /// The newest engine prints `bytes` in one write, and the main thread runs what follows.
  void print(std::string_view bytes) {
    launcher.last().print(bytes);
    time.runPosted();
  }
};

}  // namespace voxtrel::testing
