#include "voxtrel/platform/linux/windows/SettingsForm.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>

#include "voxtrel/platform/linux/windows/FormStyle.h"

namespace voxtrel {
namespace {

/// A picker that the mouse wheel changes only while it has the focus, so that scrolling past it does
/// not.
/// Thread: the main thread.
class PickerBox final : public QComboBox {
 public:
  explicit PickerBox(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus);  // the wheel must not set the focus
  }

 protected:
  void wheelEvent(QWheelEvent* event) override {
    if (hasFocus()) {
      QComboBox::wheelEvent(event);
    } else {
      event->ignore();
    }
  }
};

}  // namespace

SettingsForm::SettingsForm(std::shared_ptr<SettingsView> form, int heightPt)
    : form_(std::move(form)) {
  const int cutPt = (SettingsView::kHeightPt - heightPt) / 2;
  constexpr int kSide = SettingsView::kPaddingPt;
  const int end = std::max(0, kSide - cutPt);
  auto* const stack = new QVBoxLayout(this);
  stack->setContentsMargins(kSide, end, kSide, end);
  stack->setSpacing(SettingsView::kRowSpacingPt);
  auto* const rows = new QGridLayout;
  rows->setVerticalSpacing(SettingsView::kRowSpacingPt);
  rows->setColumnMinimumWidth(0, SettingsView::kLabelWidthPt);
  rows->setColumnMinimumWidth(1, SettingsView::kControlWidthPt);
  makeRows(*rows);
  makeSaveButton();
  stack->addStretch();
  stack->addLayout(rows);
  stack->setAlignment(rows, Qt::AlignHCenter);
  stack->addWidget(save_, 0, Qt::AlignHCenter);
  stack->addStretch();
  applyFont();
  // Weak: the form outlives these widgets; a window that opens again makes new ones.
  form_->setOnChange([self = QPointer(this)] {
    if (self) self->showLaunchAtLogin();
  });
  showLaunchAtLogin();
}

void SettingsForm::appeared() {
  form_->appeared();
}

QWidget* SettingsForm::firstInFocus() {
  return hotkey_;
}

void SettingsForm::changeEvent(QEvent* event) {
  FormContent::changeEvent(event);
  if (event->type() == QEvent::FontChange) applyFont();
}

/// Passes Return to the default button, because some styles' pickers and checkboxes use it themselves.
/// An open list is a separate window, where Return still chooses a row.
bool SettingsForm::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
      event->ignore();
      return true;
    }
  }
  return FormContent::eventFilter(watched, event);
}

QLabel* SettingsForm::makeLabel(std::string_view text, char accessKey) {
  auto* const label = new QLabel(controlText(text, accessKey), this);
  label->setTextFormat(Qt::PlainText);
  label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  labels_.push_back(label);
  return label;
}

template <typename Choices>
QComboBox* SettingsForm::makePicker(const Choices& choices, std::size_t selected, Select select) {
  auto* const picker = new PickerBox(this);
  for (const auto& choice : choices) picker->addItem(formText(choice.display));
  picker->installEventFilter(this);
  picker->setCurrentIndex(static_cast<int>(selected));
  picker->setMaxVisibleItems(static_cast<int>(choices.size()));
  connect(picker, &QComboBox::currentIndexChanged, this, [this, select](int index) {
    if (index >= 0) (form_.get()->*select)(static_cast<std::size_t>(index));
  });
  return picker;
}

void SettingsForm::addRow(QGridLayout& rows, QLabel* label, QWidget* control) {
  label->setBuddy(control);
  const int row = rows.rowCount();
  rows.addWidget(label, row, 0);
  rows.addWidget(control, row, 1, Qt::AlignVCenter);
}

/// From top to bottom, which is also the tab order.
void SettingsForm::makeRows(QGridLayout& rows) {
  using View = SettingsView;
  auto* const model = new QLabel(formText(View::kModelName), this);
  model->setTextFormat(Qt::PlainText);
  addRow(rows, makeLabel(View::kModelLabel, '\0'), model);
  hotkey_ = makePicker(View::hotkeys(), form_->selectedHotkeyIndex(), &View::selectHotkey);
  addRow(rows, makeLabel(View::kHotkeyLabel, 'H'), hotkey_);
  addRow(rows, makeLabel(View::kInputLanguageLabel, 'I'),
         makePicker(View::inputLanguages(), form_->selectedInputIndex(), &View::selectInput));
  addRow(rows, makeLabel(View::kOutputLabel, 'O'),
         makePicker(View::outputs(), form_->selectedOutputIndex(), &View::selectOutput));
  launchAtLogin_ = new QCheckBox(controlText(View::kLaunchAtLoginTitle, 'L'), this);
  connect(launchAtLogin_, &QCheckBox::toggled, this,
          [this](bool enabled) { form_->setLaunchAtLogin(enabled); });
  launchAtLogin_->installEventFilter(this);
  rows.addWidget(launchAtLogin_, rows.rowCount(), 1, Qt::AlignVCenter);
}

void SettingsForm::makeSaveButton() {
  save_ = makeLargeButton(controlText(SettingsView::kSaveTitle, 'S'), this);
  save_->setDefault(true);
  connect(save_, &QPushButton::clicked, this, [this] { form_->saveAndRestart(); });
}

void SettingsForm::applyFont() {
  for (QLabel* const label : labels_) label->setFont(semibold(font()));
}

void SettingsForm::showLaunchAtLogin() {
  const QSignalBlocker blocker(launchAtLogin_);
  launchAtLogin_->setChecked(form_->launchAtLogin());
}

}  // namespace voxtrel
