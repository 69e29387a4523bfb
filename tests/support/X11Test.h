#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "quillback/keys/OwnKeys.h"
#include "quillback/keys/x11/XInput2KeyWatch.h"
#include "quillback/ports/Output.h"
#include "support/PollLoop.h"
#include "support/VirtualDisplay.h"

namespace voxtrel::quillback {

/// A test with an X server of its own and a loop in real time.
class X11Test : public ::testing::Test {
 protected:
  static constexpr std::chrono::milliseconds kQuiet{80};
  static constexpr std::chrono::seconds kLimit{30};

  void runFor(std::chrono::milliseconds span) { loop_.runFor(span); }
  /// False where it was not so within the limit.
  bool runUntil(const std::function<bool()>& isSo) {
    const auto end = loop_.now() + kLimit;
    while (!isSo()) {
      if (loop_.now() >= end) return false;
      runFor(std::chrono::milliseconds(5));
    }
    return true;
  }
  /// Watches a key; what it does is in heard_.
  XInput2KeyWatch::Opened watchKey(std::string_view name) {
    return XInput2KeyWatch::open(*hotkeyNamed(name),
                                 {.onPressed = [this] { heard_.emplace_back("pressed"); },
                                  .onReleased = [this] { heard_.emplace_back("released"); },
                                  .onCancelled = [this] { heard_.emplace_back("cancelled"); }},
                                 ownKeys_, loop_, [this] { heard_.emplace_back("lost"); });
  }

  test::VirtualDisplay display_;
  test::PollLoop loop_;
  OwnKeys ownKeys_{loop_};
  std::vector<std::string> heard_;
};

}  // namespace voxtrel::quillback
