#pragma once

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

 private:
  StopSignals signals_{StopSignals::InheritedIgnores::replace};
};

}  // namespace voxtrel
