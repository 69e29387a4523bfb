#pragma once

#import <Foundation/Foundation.h>

#include <string>

#include "voxtrel/platform/Application.h"

namespace voxtrel {

/// Sparkle's standard controller, which looks for updates by itself from its creation on. A build
/// without the framework says so when it is asked.
/// Thread: the main thread.  Owns: the controller.
class SparkleUpdater final : public Updater {
 public:
  /// `controllerClass`: Sparkle's, or nil. `version`: of this application.
  SparkleUpdater(Class controllerClass, std::string version);

  /// The class of the framework that this program was linked with, or nil.
  static Class controllerClassOfThisBuild();

  void checkForUpdates() override;

  /// Answers `checkForUpdates:` and says when that is possible; nil without the framework.
  id controller() const { return controller_; }

 private:
  const std::string version_;
  const id controller_;
};

}  // namespace voxtrel
