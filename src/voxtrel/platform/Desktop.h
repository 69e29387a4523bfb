#pragma once

#include <memory>
#include <string>

#include <tl/expected.hpp>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

class AccessibilityTrust;
class Alerts;
class BackgroundQueue;
class ChildProcessLauncher;
class Clock;
class FormWindows;
class FrameTimer;
class Log;
class LoginItem;
class MainLoop;
class Microphone;
class MicrophoneAccess;
class Notifications;
class OverlayStage;
class PrivacySettings;
class SleepWatch;
class StatusItem;
class UserDefaults;
class VectorMath;

/// Every port, filled with one desktop's adapters.
/// Thread: each port says its own.  Borrows: the adapters.
struct Desktop {
  AccessibilityTrust& accessibilityTrust;
  Alerts& alerts;
  Application& application;
  ApplicationBundle& bundle;
  BackgroundQueue& backgroundQueue;
  ChildProcessLauncher& childProcesses;
  Clock& clock;
  FormWindows& formWindows;
  FrameTimer& frameTimer;
  Log& log;
  LoginItem& loginItem;
  MainLoop& mainLoop;
  Microphone& microphone;
  MicrophoneAccess& microphoneAccess;
  Notifications& notifications;
  OverlayStage& overlayStage;
  PrivacySettings& privacySettings;
  SleepWatch& sleepWatch;
  StatusItem& statusItem;
  Updater& updater;
  UserDefaults& userDefaults;
  const VectorMath& vectorMath;
  std::string homeDirectory;  ///< without trailing separator
};

/// The identifier under which the desktop knows the application.
inline constexpr const char* kBundleIdentifier = "org.voxtrel.Voxtrel";

/// A desktop that lives as long as this, or the status that the process must exit with.
using DesktopConnection = tl::expected<std::shared_ptr<const Desktop>, int>;

/// Connects to the desktop of the calling user, whose thread becomes the main thread. Each desktop's
/// folder defines its own. `argc` and `argv` must outlive the result.
/// `request` is passed on to the application if it already runs.
/// Fails by: status 1, after a message on standard error, also if there is nothing to restart or quit;
/// status 0 if the application that runs has taken over.
DesktopConnection connectToDesktop(int& argc, char** argv, const std::string& version,
                                   StartRequest request);

}  // namespace voxtrel
