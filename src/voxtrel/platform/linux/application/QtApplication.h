#pragma once

#include <QIcon>

#include "common/posix/StopSignals.h"
#include "voxtrel/platform/Application.h"

namespace voxtrel {

/// The running application on Qt's event loop. SIGTERM, SIGINT and SIGHUP ask the delegate to quit.
/// Thread: the main thread.  Owns: the handling of those signals.  Borrows: the QApplication.
/// Fails by: nothing.
class QtApplication final : public Application {
 public:
  int run(ApplicationDelegate& delegate) override;
  void terminate() override;
  /// The application was started again, with this request.
  void take(StartRequest request);

 private:
  ApplicationDelegate* delegate_ = nullptr;  ///< while it runs
  StopSignals signals_{StopSignals::InheritedIgnores::replace};
};

/// The application's own icon, in colour.
QIcon applicationIcon();

/// Raises the application's visible windows and gives them the focus, as far as the desktop allows.
/// `activationToken`: the desktop's permission to take the focus, or empty. It is passed on as X11's
/// start-up id, not in the environment, which other threads read.
/// Thread: the main thread.
void bringForward(const QString& activationToken);

}  // namespace voxtrel
