#pragma once

#include <QTimer>
#include <memory>

#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/platform/linux/windows/FormDialog.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace voxtrel {

class LogView;

/// The download form's widgets. They follow the form at most once a frame.
/// Thread: the main thread.  Owns: its widgets and a share of the form, whose onChange it sets.
class DownloadForm final : public FormContent {
 public:
  /// The form is centred in `heightPt`.
  DownloadForm(std::shared_ptr<ModelDownloadView> form, int heightPt);

  void appeared() override;
  /// Counts hidden blocks too, so that the window keeps its size.
  int neededHeight(int width) const override;

 protected:
  void changeEvent(QEvent* event) override;

 private:
  QLabel* makeLabel(std::string_view text);
  QWidget* makeProgress();
  QWidget* makeLog();
  QWidget* makeError();
  QWidget* makeButtons();
  void applyStyle();
  void formChanged();
  void refresh();

  const std::shared_ptr<ModelDownloadView> form_;
  QLabel* title_ = nullptr;
  QLabel* description_ = nullptr;
  QWidget* progress_ = nullptr;
  QProgressBar* bar_ = nullptr;
  QLabel* amount_ = nullptr;
  LogView* log_ = nullptr;
  QWidget* error_ = nullptr;
  QLabel* message_ = nullptr;
  QLabel* hint_ = nullptr;
  QPushButton* skip_ = nullptr;
  QPushButton* retry_ = nullptr;
  QTimer nextFrame_;
  ModelDownloadView::DownloadState::Kind seenKind_ = ModelDownloadView::DownloadState::Kind::ready;
  std::size_t seenLines_ = 0;
};

}  // namespace voxtrel
