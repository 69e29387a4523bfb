#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/FakeChildProcesses.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "voxtrel/download/ModelDownloadView.h"

namespace voxtrel {

inline void PrintTo(const ModelDownloadView::DownloadState& state, std::ostream* stream) {
  *stream << static_cast<int>(state.kind) << ' ' << state.message;
}

}  // namespace voxtrel

namespace voxtrel::testing {

/// A download with everything around it under the test's control.
struct DownloadFixture {
  using State = ModelDownloadView::DownloadState;

  ManualTime time;
  FakeBundle bundle;
  FakeLauncher launcher{time};
  int completions = 0, skips = 0, changes = 0;
  std::shared_ptr<ModelDownloadView> view = ModelDownloadView::create(
      {.bundle = bundle, .backgroundQueue = time, .childProcesses = launcher, .mainLoop = time},
      "medium", {[this] { ++completions; }, [this] { ++skips; }});

  DownloadFixture() {
    view->setOnChange([this] { ++changes; });
  }

  const std::vector<std::string>& log() const { return view->logLines(); }
  void expectReset() const {
    EXPECT_EQ(view->downloadProgress(), 0.0);
    EXPECT_EQ(view->downloadedMB(), "");
    EXPECT_EQ(view->totalMB(), "");
    EXPECT_EQ(log(), std::vector<std::string>{"Connecting to HuggingFace..."});
  }

  /// Shows the window and starts the setup.
  void appear() {
    view->appeared();
    time.runPosted();
  }
  /// The setup prints `bytes` in one write, and the main thread handles them.
  void print(std::string_view bytes) {
    launcher.last().print(bytes);
    time.runPosted();
  }
  void exit(int status) {
    launcher.last().exit(status);
    time.runPosted();
  }
};

}  // namespace voxtrel::testing
