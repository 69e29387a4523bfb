#pragma once

#include <QDBusPendingCall>
#include <optional>

#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/linux/session/ActivationObject.h"

namespace voxtrel {

/// The application's name on the session bus, which one process of a session can own.
/// Thread: the main thread.  Owns: the object that answers under the name.  Borrows: Log.
/// Fails by: one line in the log where there is no session bus; then every start is the only one.
class SingleInstance {
 public:
  /// Asks for the name without waiting for the answer.
  explicit SingleInstance(Log& log);

  /// Whether this process may go on. False: another runs already, and has been asked to come
  /// forward.
  bool isFirst();

 private:
  static void activateOther();

  Logger log_;
  ActivationObject object_;
  std::optional<QDBusPendingCall> nameRequest_;
};

}  // namespace voxtrel
