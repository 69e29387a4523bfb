#pragma once

#include <memory>
#include <string>

#include "support/FakeChildProcesses.h"
#include "support/FakeForms.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "support/OverlayBench.h"
#include "voxtrel/overlay/RecordingOverlay.h"
#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/Desktop.h"

namespace voxtrel::testing {

struct FakeOverlay : private OverlayWorld, RecordingOverlay {
  FakeOverlay() : RecordingOverlay(ports()) {}
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

/// A desktop on which nothing happens but what the test does.
struct FakeDesktop : Desktop {
  AccessibilityTrust& accessibilityTrust() override { return trust; }
  Alerts& alerts() override { return fakeAlerts; }
  Application& application() override { return app; }
  ApplicationBundle& bundle() override { return applicationBundle; }
  BackgroundQueue& backgroundQueue() override { return time; }
  ChildProcessLauncher& childProcesses() override { return launcher; }
  Clock& clock() override { return time; }
  FormWindows& formWindows() override { return forms; }
  FrameTimer& frameTimer() override { return overlayWorld.frameTimer; }
  Log& log() override { return fakeLog; }
  LoginItem& loginItem() override { return fakeLoginItem; }
  MainLoop& mainLoop() override { return time; }
  Microphone& microphone() override { return overlayWorld.microphone; }
  MicrophoneAccess& microphoneAccess() override { return access; }
  Notifications& notifications() override { return fakeNotifications; }
  OverlayStage& overlayStage() override { return overlayWorld.stage; }
  PrivacySettings& privacySettings() override { return privacy; }
  SleepWatch& sleepWatch() override { return sleep; }
  StatusItem& statusItem() override { return item; }
  Updater& updater() override { return fakeUpdater; }
  UserDefaults& userDefaults() override { return defaults; }
  std::unique_ptr<RealFft> makeRealFft() override { return nullptr; }
  std::string homeDirectory() const override { return home; }

  std::string home = "/nonexistent";
  ManualTime time;
  FakeTrust trust;
  FakeAlerts fakeAlerts;
  FakeApplication app;
  FakeBundle applicationBundle;
  FakeFormWindows forms;
  FakeLauncher launcher{time};
  FakeLoginItem fakeLoginItem;
  FakeLog fakeLog;
  FakeMicrophoneAccess access;
  OverlayWorld overlayWorld;
  FakeNotifications fakeNotifications;
  FakePrivacySettings privacy;
  FakeSleepWatch sleep;
  FakeStatusItem item;
  FakeUpdater fakeUpdater;
  FakeUserDefaults defaults;
};

}  // namespace voxtrel::testing
