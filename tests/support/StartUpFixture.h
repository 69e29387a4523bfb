#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/FakeDesktop.h"
#include "support/ScratchFolder.h"
#include "voxtrel/app/AppDelegate.h"

namespace voxtrel::testing {

/// The delegate on a desktop on which only the test acts, with the model's weights in place.
struct StartUpFixture : ::testing::Test {
  StartUpFixture() {
    desktop.ports.homeDirectory = home.path().string();
    home.write(kManifestPath, "{}");
    desktop.application.onTerminate = [this] { delegate->applicationWillTerminate(); };
  }

  void finishLaunching() { delegate->applicationDidFinishLaunching(); }
  void answerMicrophone(bool granted) {
    desktop.access.answer(granted);
    desktop.time.runPosted();
  }
  std::size_t starts() const { return desktop.launcher.startedAt.size(); }
  std::vector<std::string> logged(const std::string& category) const {
    std::vector<std::string> messages;
    for (const auto& entry : desktop.log.entries) {
      if (entry.category == category) messages.push_back(entry.message);
    }
    return messages;
  }

  static constexpr std::string_view kManifestPath =
      ".local/share/quillback/weights/whisper-large-v3/manifest.json";
  ScratchFolder home;
  FakeDesktop desktop;
  FakeOverlay overlay;
  std::shared_ptr<AppDelegate> delegate = std::make_shared<AppDelegate>(desktop.ports, overlay);
};

}  // namespace voxtrel::testing
