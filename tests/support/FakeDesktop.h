#pragma once

#include <memory>
#include <string>

#include "overlay/RecordingOverlay.h"
#include "platform/Application.h"
#include "platform/Desktop.h"
#include "support/FakeChildProcesses.h"
#include "support/FakePorts.h"
#include "support/ManualTime.h"
#include "support/OverlayBench.h"

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
  Application& application() override { return app; }
  ApplicationBundle& bundle() override { return applicationBundle; }
  BackgroundQueue& backgroundQueue() override { return time; }
  ChildProcessLauncher& childProcesses() override { return launcher; }
  Clock& clock() override { return time; }
  FrameTimer& frameTimer() override { return overlayWorld.frameTimer; }
  Log& log() override { return fakeLog; }
  MainLoop& mainLoop() override { return time; }
  Microphone& microphone() override { return overlayWorld.microphone; }
  MicrophoneAccess& microphoneAccess() override { return access; }
  Notifications& notifications() override { return fakeNotifications; }
  OverlayStage& overlayStage() override { return overlayWorld.stage; }
  SettingsPresenter& settingsPresenter() override { return settings; }
  SleepWatch& sleepWatch() override { return sleep; }
  StatusItem& statusItem() override { return item; }
  Updater& updater() override { return fakeUpdater; }
  std::unique_ptr<RealFft> makeRealFft() override { return nullptr; }
  std::string homeDirectory() const override { return "/nonexistent"; }

  ManualTime time;
  FakeTrust trust;
  FakeApplication app;
  FakeBundle applicationBundle;
  FakeLauncher launcher{time};
  FakeLog fakeLog;
  FakeMicrophoneAccess access;
  OverlayWorld overlayWorld;
  FakeNotifications fakeNotifications;
  FakeSettingsPresenter settings;
  FakeSleepWatch sleep;
  FakeStatusItem item;
  FakeUpdater fakeUpdater;
};

}  // namespace voxtrel::testing
