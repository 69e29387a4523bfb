#pragma once

#include <functional>
#include <utility>

#include "platform/MainLoop.h"
#include "platform/Permissions.h"

namespace voxtrel {

/// The key is taken to be visible: nothing here hides it from a program yet.
/// Thread: the main thread.
class GrantedAccessibilityTrust final : public AccessibilityTrust {
 public:
  bool isTrusted(bool) override { return true; }
};

/// The microphone is taken to be free to use: the desktop asks nobody.
/// Thread: the main thread.  Borrows: MainLoop.
class GrantedMicrophoneAccess final : public MicrophoneAccess {
 public:
  explicit GrantedMicrophoneAccess(MainLoop& mainLoop) : mainLoop_(mainLoop) {}

  /// Answers later, as a desktop that asks the user does.
  void request(std::function<void(bool granted)> answer) override {
    mainLoop_.post([answer = std::move(answer)] { answer(true); });
  }

 private:
  MainLoop& mainLoop_;
};

}  // namespace voxtrel
