#pragma once

#include <QMessageBox>
#include <functional>
#include <vector>

#include "voxtrel/platform/Alerts.h"

namespace voxtrel {

/// The box of one alert, which keeps the rest of the application's windows from being used.
/// Thread: the main thread.  Deletes itself once it has been answered; destroyed before, it never
/// answers.
class AlertBox final : public QMessageBox {
  // Has no native counterpart, whose buttons would be in an order of their own.
  Q_OBJECT

 public:
  AlertBox(const Alert& alert, std::function<void(std::size_t)> onAnswer);

  /// Comes up in front without waiting for the answer.
  void comeUp();

 private:
  void addButtons(const std::vector<std::string>& texts);
  std::size_t chosen() const;

  std::vector<QPushButton*> buttons_;
};

}  // namespace voxtrel
