#pragma once

#include <QMessageBox>
#include <QPointer>
#include <string>
#include <utility>
#include <vector>

#include "voxtrel/platform/Alerts.h"
#include "voxtrel/platform/Application.h"

namespace voxtrel {

class DesktopColors;

/// Shows alerts as message boxes. The main loop keeps running while one is open.
/// Thread: the main thread.  Owns: the boxes until they are answered.
/// Borrows: DesktopColors (must outlive this).
class QtAlerts final : public Alerts {
 public:
  explicit QtAlerts(DesktopColors& colors) : colors_(colors) {}
  ~QtAlerts() override;

  void runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) override;

 private:
  DesktopColors& colors_;
  std::vector<QPointer<QMessageBox>> boxes_;
};

/// Shows the version in a non-modal box, because this build has no update feed.
/// Thread: the main thread.  Owns: the box, at most one.
class UpdateNotice final : public Updater {
 public:
  explicit UpdateNotice(std::string version) : version_(std::move(version)) {}
  ~UpdateNotice() override;
  UpdateNotice(const UpdateNotice&) = delete;
  UpdateNotice& operator=(const UpdateNotice&) = delete;

  /// Opens the box, or brings the open one to the front.
  void checkForUpdates() override;

 private:
  const std::string version_;
  QPointer<QMessageBox> box_;
};

}  // namespace voxtrel
