#include "voxtrel/platform/linux/windows/AlertBox.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "voxtrel/platform/linux/tray/SymbolIcons.h"
#include "voxtrel/platform/linux/windows/BoxWidth.h"
#include "voxtrel/platform/linux/windows/FormText.h"
#include "voxtrel/platform/linux/windows/WindowPlacement.h"

namespace voxtrel {

namespace {

/// The role whose buttons no desktop's layout puts in another order than that of their adding. (A
/// style sheet could ask for a layout, but what it covers misses later changes of colour.)
constexpr QMessageBox::ButtonRole kInOrder = QMessageBox::ActionRole;

constexpr int kWidthPt = 420;

/// To the letter, and the message text stands out from the informative one.
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

}  // namespace

AlertBox::AlertBox(const Alert& alert, std::function<void(std::size_t)> onAnswer)
    : QMessageBox(Warning, "Voxtrel", formText(alert.messageText), NoButton) {
  setInformativeText(formText(alert.informativeText));
  setWindowIcon(applicationIcon());
  setModal(true);
  setFormats(*this);
  widen(*this, kWidthPt);
  addButtons(alert.buttons);
  connect(this, &QDialog::finished, this, [this, onAnswer = std::move(onAnswer)] {
    deleteLater();
    onAnswer(chosen());
  });
}

void AlertBox::comeUp() {
  ensurePolished();
  adjustSize();
  centreOnScreen(*this);
  show();
  raise();
  activateWindow();
}

void AlertBox::addButtons(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) {
    buttons_.push_back(addButton(controlText(text), kInOrder));
  }
  if (buttons_.empty()) return;
  setDefaultButton(buttons_.front());
  setEscapeButton(buttons_.back());
}

/// The close box chooses no button; that counts as the last.
std::size_t AlertBox::chosen() const {
  const auto found = std::find(buttons_.begin(), buttons_.end(), clickedButton());
  if (found == buttons_.end()) return buttons_.empty() ? 0 : buttons_.size() - 1;
  return static_cast<std::size_t>(found - buttons_.begin());
}

}  // namespace voxtrel
