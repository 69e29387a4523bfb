#pragma once

#import <AppKit/AppKit.h>

#include "voxtrel/platform/SleepWatch.h"

namespace voxtrel {

/// Sleep and wake as the workspace announces them. Both handlers run on the main thread, before the
/// announcement returns; the machine waits for them for up to 30 seconds.
/// Thread: the main thread.
class WorkspaceSleepWatch final : public SleepWatch {
 public:
  [[nodiscard]] Subscription onWillSleep(std::function<void()> handler) override;
  [[nodiscard]] Subscription onDidWake(std::function<void()> handler) override;
};

}  // namespace voxtrel
