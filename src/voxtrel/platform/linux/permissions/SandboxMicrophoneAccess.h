#pragma once

#include <QDBusConnection>
#include <QObject>
#include <string>

#include "voxtrel/platform/Permissions.h"

namespace voxtrel {

class Log;
class MainLoop;

/// Outside a sandbox every program may use the microphone; inside one the desktop's portal asks the
/// user. The portal gets 25 seconds to accept the request; the user may then take any time.
/// Thread: the main thread, replies included; a reply never arrives before `request` returns.
/// Owns: its requests; those without a reply end with it.  Borrows: MainLoop, Log.
/// Fails by: granting, with one line in the log, if the portal is missing, refuses the request or
/// ends.
class SandboxMicrophoneAccess final : public MicrophoneAccess {
 public:
  /// `sandboxMarker`: a file that exists only inside a sandbox.
  SandboxMicrophoneAccess(MainLoop& mainLoop, Log& log, QDBusConnection bus,
                          std::string sandboxMarker);

  void request(std::function<void(bool granted)> onReply) override;

 private:
  MainLoop& mainLoop_;
  Log& log_;
  QDBusConnection bus_;
  const std::string sandboxMarker_;
  QObject requests_;  ///< their parent
};

}  // namespace voxtrel
