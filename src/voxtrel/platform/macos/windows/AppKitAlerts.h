#pragma once

#include "voxtrel/platform/Alerts.h"

namespace voxtrel {

/// Shows alerts as modal NSAlerts; blocks until the user has answered.
/// Thread: the main thread.
class AppKitAlerts final : public Alerts {
 public:
  void runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) override;
};

}  // namespace voxtrel
