#pragma once

#include <QDBusConnection>
#include <QObject>
#include <string>

#include "voxtrel/platform/Permissions.h"

namespace voxtrel {

class Log;
class MainLoop;

/// Outside a sandbox every program of the user's may use the microphone; inside one the desktop's
/// portal asks the user.
/// Thread: the main thread, answers included; an answer never arrives before `request` returns.
/// Owns: its questions; those without an answer end with it.  Borrows: MainLoop, Log.
class SandboxMicrophoneAccess final : public MicrophoneAccess {
 public:
  /// `sandboxMarker`: the file that exists inside a sandbox only.
  SandboxMicrophoneAccess(MainLoop& mainLoop, Log& log, QDBusConnection bus,
                          std::string sandboxMarker);

  void request(std::function<void(bool granted)> answer) override;

 private:
  MainLoop& mainLoop_;
  Log& log_;
  QDBusConnection bus_;
  const std::string sandboxMarker_;
  QObject requests_;  ///< parent of those that run
};

}  // namespace voxtrel
