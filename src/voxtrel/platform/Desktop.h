#pragma once

#include <memory>
#include <string>

namespace voxtrel {

class AccessibilityTrust;
class Alerts;
class Application;
class ApplicationBundle;
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
class RealFft;
class SleepWatch;
class StatusItem;
class Updater;
class UserDefaults;

/// Every port, met by one desktop's adapters.
/// Thread: the main thread, which must be the one that made it.  Owns: the adapters, which live as
/// long as this.
class Desktop {
 public:
  virtual ~Desktop() = default;

  virtual AccessibilityTrust& accessibilityTrust() = 0;
  virtual Alerts& alerts() = 0;
  virtual Application& application() = 0;
  virtual ApplicationBundle& bundle() = 0;
  virtual BackgroundQueue& backgroundQueue() = 0;
  virtual ChildProcessLauncher& childProcesses() = 0;
  virtual Clock& clock() = 0;
  virtual FormWindows& formWindows() = 0;
  virtual FrameTimer& frameTimer() = 0;
  virtual Log& log() = 0;
  virtual LoginItem& loginItem() = 0;
  virtual MainLoop& mainLoop() = 0;
  virtual Microphone& microphone() = 0;
  virtual MicrophoneAccess& microphoneAccess() = 0;
  virtual Notifications& notifications() = 0;
  virtual OverlayStage& overlayStage() = 0;
  virtual PrivacySettings& privacySettings() = 0;
  virtual SleepWatch& sleepWatch() = 0;
  virtual StatusItem& statusItem() = 0;
  virtual Updater& updater() = 0;
  virtual UserDefaults& userDefaults() = 0;
  virtual std::unique_ptr<RealFft> makeRealFft() = 0;  ///< null if there is no memory for it
  virtual std::string homeDirectory() const = 0;       ///< without trailing separator
};

/// The identifier under which the desktop knows the application.
inline constexpr const char* kBundleIdentifier = "org.voxtrel.Voxtrel";

/// What came of connecting.
struct DesktopConnection {
  std::unique_ptr<Desktop> desktop;  ///< null: the process has nothing left to do
  int exitStatus = 0;                ///< what it then ends with
};

/// Connects to the desktop of the calling user; each desktop's folder defines its own. `argc` and
/// `argv` must outlive the result.
/// Fails by: no desktop and status 1, after telling the user why on standard error. Where the
/// application runs already, that one comes forward, and this one ends with status 0.
DesktopConnection connectToDesktop(int& argc, char** argv, const std::string& version);

}  // namespace voxtrel
