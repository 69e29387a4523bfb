#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/FakeDesktop.h"
#include "support/ScratchFolder.h"
#include "voxtrel/menubar/StatusBarController.h"

namespace voxtrel::testing {

/// The controller on a desktop on which only the test acts.
struct StatusBarFixture : ::testing::Test {
  static constexpr std::chrono::milliseconds kTick{50};
  enum Row : std::size_t { status, lastText, separator, settings, updates, restart, quit };

  StatusBarFixture() { controller = StatusBarController::create(ports()); }

  StatusBarPorts ports() {
    Desktop ofHome = desktop.ports;
    ofHome.homeDirectory = home.path().string();
    return StatusBarPorts::of(ofHome, overlay);
  }

  /// The engine prints `text`, and the next tick shows what came of it.
  void print(std::string_view text) {
    desktop.launcher.last().print(text);
    desktop.time.advance(kTick);
  }
  const std::string& title(std::size_t row) const { return desktop.item.rows.at(row).title; }
  std::size_t starts() const { return desktop.launcher.startedAt.size(); }
  std::vector<std::string> logged() const {
    std::vector<std::string> messages;
    for (const auto& entry : desktop.log.entries) {
      EXPECT_EQ(entry.category, "ui");
      messages.push_back(entry.message);
    }
    return messages;
  }

  ScratchFolder home;
  FakeDesktop desktop;
  FakeOverlay overlay;
  std::shared_ptr<StatusBarController> controller;
};

}  // namespace voxtrel::testing
