#pragma once

#include <memory>
#include <string>

#include "support/FakeChildProcesses.h"
#include "support/FakeForms.h"
#include "support/FakeOverlayPorts.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/Desktop.h"
#include "voxtrel/platform/RecordingIndicator.h"

namespace voxtrel::testing {

struct FakeOverlay : RecordingIndicator {
  void show() override { calls += 's'; }
  void hide() override { calls += 'h'; }
  std::string calls;  // in order: s for show, h for hide
};

struct FakeApplication : Application {
  int run(ApplicationDelegate& delegate) override {
    delegate.applicationDidFinishLaunching();
    return 0;
  }
  void terminate() override {
    ++terminations;
    if (onTerminate) onTerminate();
  }
  int terminations = 0;
  std::function<void()> onTerminate;
};

/// A desktop on which only the test acts.
struct FakeDesktop {
  ManualTime time;
  FakeTrust trust;
  FakeAlerts alerts;
  FakeApplication application;
  FakeBundle bundle;
  FakeFormWindows forms;
  FakeLauncher launcher{time};
  FakeLoginItem loginItem;
  FakeLog log;
  FakeMicrophoneAccess access;
  FakeOverlayPorts overlayPorts;
  FakeNotifications notifications;
  FakePrivacySettings privacy;
  FakeSleepWatch sleep;
  FakeStatusItem item;
  FakeUpdater updater;
  FakeUserDefaults defaults;
  Desktop ports{.accessibilityTrust = trust,
                .alerts = alerts,
                .application = application,
                .bundle = bundle,
                .backgroundQueue = time,
                .childProcesses = launcher,
                .clock = time,
                .formWindows = forms,
                .frameTimer = overlayPorts.frameTimer,
                .log = log,
                .loginItem = loginItem,
                .mainLoop = time,
                .microphone = overlayPorts.microphone,
                .microphoneAccess = access,
                .notifications = notifications,
                .overlayStage = overlayPorts.stage,
                .privacySettings = privacy,
                .sleepWatch = sleep,
                .statusItem = item,
                .updater = updater,
                .userDefaults = defaults,
                .vectorMath = overlayPorts.vectorMath,
                .homeDirectory = "/nonexistent"};
};

}  // namespace voxtrel::testing
