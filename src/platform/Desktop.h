#pragma once

#include <memory>
#include <string>

namespace voxtrel {

class AccessibilityTrust;
class Application;
class ApplicationBundle;
class BackgroundQueue;
class ChildProcessLauncher;
class Clock;
class FrameTimer;
class Log;
class MainLoop;
class Microphone;
class MicrophoneAccess;
class Notifications;
class OverlayStage;
class RealFft;
class SettingsPresenter;
class SleepWatch;
class StatusItem;
class Updater;

/// Every port, met by one desktop's adapters.
/// Thread: the main thread, which must be the one that made it.  Owns: the adapters, which live as
/// long as this.
class Desktop {
 public:
  virtual ~Desktop() = default;

  virtual AccessibilityTrust& accessibilityTrust() = 0;
  virtual Application& application() = 0;
  virtual ApplicationBundle& bundle() = 0;
  virtual BackgroundQueue& backgroundQueue() = 0;
  virtual ChildProcessLauncher& childProcesses() = 0;
  virtual Clock& clock() = 0;
  virtual FrameTimer& frameTimer() = 0;
  virtual Log& log() = 0;
  virtual MainLoop& mainLoop() = 0;
  virtual Microphone& microphone() = 0;
  virtual MicrophoneAccess& microphoneAccess() = 0;
  virtual Notifications& notifications() = 0;
  virtual OverlayStage& overlayStage() = 0;
  virtual SettingsPresenter& settingsPresenter() = 0;
  virtual SleepWatch& sleepWatch() = 0;
  virtual StatusItem& statusItem() = 0;
  virtual Updater& updater() = 0;
  virtual std::unique_ptr<RealFft> makeRealFft() = 0;  ///< null if there is no memory for it
  virtual std::string homeDirectory() const = 0;  ///< without trailing separator
};

/// The identifier under which the desktop knows the application.
inline constexpr const char* kBundleIdentifier = "org.voxtrel.Voxtrel";

/// Connects to the desktop of the calling user; each desktop's folder defines its own.
/// Fails by: null, after telling the user why on standard error.
std::unique_ptr<Desktop> connectToDesktop(int& argc, char** argv, const std::string& version);

}  // namespace voxtrel
