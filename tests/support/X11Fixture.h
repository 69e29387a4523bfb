#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "quillback/keys/OwnKeys.h"
#include "quillback/keys/x11/XInput2KeyWatch.h"
#include "support/PollLoop.h"
#include "support/VirtualDisplay.h"

namespace voxtrel::quillback {

/// A test with its own X server and a loop in real time.
class X11Fixture : public ::testing::Test {
 protected:
  static constexpr std::chrono::milliseconds kSettle{80};
  static constexpr std::chrono::seconds kTimeout{30};

  void runFor(std::chrono::milliseconds span) { loop_.runFor(span); }
  /// False if `isSo` does not hold within the limit.
  bool runUntil(const std::function<bool()>& isSo) {
    const auto end = loop_.now() + kTimeout;
    while (!isSo()) {
      if (loop_.now() >= end) return false;
      runFor(std::chrono::milliseconds(5));
    }
    return true;
  }
  /// Watches a key and notes its events.
  auto watchKey(std::string_view name) {
    return XInput2KeyWatch::open(*hotkeyNamed(name),
                                 {.onPressed = [this] { events_.emplace_back("pressed"); },
                                  .onReleased = [this] { events_.emplace_back("released"); },
                                  .onCancelled = [this] { events_.emplace_back("cancelled"); }},
                                 ownKeys_, loop_, [this] { events_.emplace_back("lost"); });
  }

  test::VirtualDisplay display_;
  test::PollLoop loop_;
  OwnKeys ownKeys_{loop_};
  std::vector<std::string> events_;
};

}  // namespace voxtrel::quillback
