#include "voxtrel/platform/linux/windows/MessageBoxes.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

#include "voxtrel/platform/linux/application/QtApplication.h"
#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/FormDialog.h"
#include "voxtrel/platform/linux/windows/FormStyle.h"

namespace voxtrel {
namespace {

constexpr int kAlertWidthPt = 420;
constexpr int kNoticeWidthPt = 300;  // fits its title

/// Every desktop's layout keeps buttons of this role in the order they were added. (A style sheet
/// could set a layout, but the widgets it covers miss later changes of colour.)
constexpr QMessageBox::ButtonRole kInOrder = QMessageBox::ActionRole;

/// Sets the least inner width. By itself a box is only as wide as its message text.
void widen(QMessageBox& box, int widthPt) {
  if (auto* const grid = qobject_cast<QGridLayout*>(box.layout())) {
    grid->addItem(new QSpacerItem(widthPt, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
}

/// Shows both texts literally, the message text in bold.
void setFormats(QMessageBox& box) {
  box.setTextFormat(Qt::PlainText);
  if (auto* const message = box.findChild<QLabel*>("qt_msgbox_label")) {
    QFont font = message->font();
    font.setBold(true);
    message->setFont(font);
  }
  if (auto* const information = box.findChild<QLabel*>("qt_msgbox_informativelabel")) {
    information->setTextFormat(Qt::PlainText);
  }
}

/// The box of one alert, modal to the application's windows.
/// Thread: the main thread.  Deletes itself once answered; if destroyed before, reports no answer.
class AlertBox final : public QMessageBox {
  // Prevents a native dialog, which would choose the order of the buttons.
  Q_OBJECT

 public:
  AlertBox(const Alert& alert, std::function<void(std::size_t)> onAnswer)
      : QMessageBox(Warning, "Voxtrel", formText(alert.messageText), NoButton) {
    setInformativeText(formText(alert.informativeText));
    setWindowIcon(applicationIcon());
    setModal(true);
    setFormats(*this);
    widen(*this, kAlertWidthPt);
    addButtons(alert.buttons);
    connect(this, &QDialog::finished, this, [this, onAnswer = std::move(onAnswer)] {
      deleteLater();
      onAnswer(chosen());
    });
  }

  /// Comes to the front without blocking.
  void comeUp() {
    ensurePolished();
    adjustSize();
    centreOnScreen(*this);
    show();
    raise();
    activateWindow();
  }

 private:
  void addButtons(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      buttons_.push_back(addButton(controlText(text), kInOrder));
    }
    if (buttons_.empty()) return;
    setDefaultButton(buttons_.front());
    setEscapeButton(buttons_.back());
  }

  /// The close box clicks no button; that counts as the last.
  std::size_t chosen() const {
    const auto found = std::find(buttons_.begin(), buttons_.end(), clickedButton());
    if (found == buttons_.end()) return buttons_.empty() ? 0 : buttons_.size() - 1;
    return static_cast<std::size_t>(found - buttons_.begin());
  }

  std::vector<QPushButton*> buttons_;
};

}  // namespace

QtAlerts::~QtAlerts() {
  for (const auto& box : boxes_) delete box.data();
}

void QtAlerts::runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) {
  colors_.follow();
  std::erase_if(boxes_, [](const auto& box) { return box.isNull(); });
  auto* const box = new AlertBox(alert, std::move(onAnswer));
  boxes_.emplace_back(box);
  box->comeUp();
}

UpdateNotice::~UpdateNotice() {
  delete box_.data();
}

void UpdateNotice::checkForUpdates() {
  if (!box_) {
    box_ = new QMessageBox(QMessageBox::NoIcon, "Voxtrel Updates", formText("Voxtrel " + version_),
                           QMessageBox::Ok);
    box_->setTextFormat(Qt::PlainText);
    box_->setInformativeText("This build has no update feed.");
    box_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box_->setWindowIcon(applicationIcon());
    box_->setAttribute(Qt::WA_DeleteOnClose);
    box_->setModal(false);
    widen(*box_, kNoticeWidthPt);
    box_->show();
  }
  box_->raise();
  box_->activateWindow();
}

}  // namespace voxtrel

#include "MessageBoxes.moc"
