#pragma once

#include <QPointer>
#include <vector>

#include "voxtrel/platform/Alerts.h"

namespace voxtrel {

class AlertBox;
class DesktopColors;

/// Alerts as Qt's boxes; everything else goes on meanwhile.
/// Thread: the main thread.  Owns: the boxes until they are answered.  Borrows: the desktop's colours.
class QtAlerts final : public Alerts {
 public:
  explicit QtAlerts(DesktopColors& colors) : colors_(colors) {}
  ~QtAlerts() override;

  void runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) override;

 private:
  DesktopColors& colors_;
  std::vector<QPointer<AlertBox>> boxes_;
};

}  // namespace voxtrel
