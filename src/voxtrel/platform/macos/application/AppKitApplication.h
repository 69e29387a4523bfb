#pragma once

#import <AppKit/AppKit.h>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

/// The running application: an accessory, which has no Dock icon and no main menu. SIGTERM, SIGINT and
/// SIGHUP ask the delegate to quit.
/// Thread: the main thread.  Owns: the handling of those signals while it runs.
/// Fails by: nothing.
class AppKitApplication final : public Application {
 public:
  /// Ends the process itself once `terminate` was called or the system asked for it, as AppKit does; so
  /// it returns only where the run loop was stopped.
  int run(ApplicationDelegate& delegate) override;
  void terminate() override;
};

/// The bundle from which the application was started.
/// Thread: any.
class MainBundle final : public ApplicationBundle {
 public:
  std::optional<std::string> auxiliaryExecutable(std::string_view name) const override;
};

}  // namespace voxtrel
