#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "voxtrel/forms/SettingsView.h"
#include "voxtrel/platform/linux/windows/FormDialog.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

namespace voxtrel {

/// The settings form's widgets.
/// Thread: the main thread.  Owns: its widgets and a share of the form, whose onChange it sets.
class SettingsForm final : public FormContent {
 public:
  /// The form is centred in `heightPt`, which may be less than the form's own height.
  SettingsForm(std::shared_ptr<SettingsView> form, int heightPt);

  void appeared() override;
  QWidget* firstInFocus() override;

 protected:
  void changeEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  using Select = void (SettingsView::*)(std::size_t);

  void addRow(QGridLayout& rows, QLabel* label, QWidget* control);
  QLabel* makeLabel(std::string_view text, char accessKey);
  template <typename Choices>
  QComboBox* makePicker(const Choices& choices, std::size_t selected, Select select);
  void makeRows(QGridLayout& rows);
  void makeSaveButton();
  void applyFont();
  void showLaunchAtLogin();

  const std::shared_ptr<SettingsView> form_;
  std::vector<QLabel*> labels_;
  QComboBox* hotkey_ = nullptr;
  QCheckBox* launchAtLogin_ = nullptr;
  QPushButton* save_ = nullptr;
};

}  // namespace voxtrel
