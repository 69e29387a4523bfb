#pragma once

#include <QTimer>
#include <memory>

#include "voxtrel/download/ModelDownloadView.h"
#include "voxtrel/platform/linux/windows/FormContent.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace voxtrel {

class LogView;

/// The download form's widgets. However often the form changes, they follow once a frame.
/// Thread: the main thread.  Owns: its widgets and a share of the form, whose listener it is.
class DownloadForm final : public FormContent {
 public:
  /// `heightPt`: what the form is centred in.
  DownloadForm(std::shared_ptr<ModelDownloadView> form, int heightPt);

  void appeared() override;
  /// Includes the room of the blocks that are not there now, so that the window need not change.
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
