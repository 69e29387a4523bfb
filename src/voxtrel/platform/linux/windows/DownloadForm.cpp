#include "voxtrel/platform/linux/windows/DownloadForm.h"

#include <QEvent>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>

#include "voxtrel/platform/linux/windows/FormStyle.h"
#include "voxtrel/platform/linux/windows/LogView.h"

namespace voxtrel {
namespace {

constexpr int kBarSteps = 10000;
constexpr std::chrono::milliseconds kFrame{16};

void setTextOf(QLabel& label, const std::string& text) {
  label.setText(formText(text));
}

}  // namespace

DownloadForm::DownloadForm(std::shared_ptr<ModelDownloadView> form, int heightPt)
    : form_(std::move(form)) {
  const int end =
      std::max(0, ModelDownloadView::kPaddingPt + (heightPt - ModelDownloadView::kHeightPt) / 2);
  auto* const stack = new QVBoxLayout(this);
  stack->setContentsMargins(ModelDownloadView::kPaddingPt, end, ModelDownloadView::kPaddingPt, end);
  stack->setSpacing(ModelDownloadView::kSpacingPt);
  title_ = makeLabel(ModelDownloadView::kTitle);
  description_ = makeLabel(ModelDownloadView::kDescription);
  stack->addStretch();
  stack->addWidget(title_);
  stack->addWidget(description_);
  stack->addWidget(makeProgress());
  stack->addWidget(makeLog());
  stack->addWidget(makeError());
  stack->addWidget(makeButtons());
  stack->addStretch();
  applyStyle();
  nextFrame_.setSingleShot(true);
  connect(&nextFrame_, &QTimer::timeout, this, [this] { refresh(); });
  // Weak: the form outlives these widgets; a window that opens again makes new ones.
  form_->setOnChange([self = QPointer(this)] {
    if (self) self->formChanged();
  });
  refresh();
}

void DownloadForm::appeared() {
  form_->appeared();
}

int DownloadForm::neededHeight(int width) const {
  const int inner = width - 2 * ModelDownloadView::kPaddingPt;
  const int progress = bar_->sizeHint().height() + ModelDownloadView::kProgressSpacingPt +
                       QFontMetrics(amount_->font()).height();
  const int error = error_->layout()->heightForWidth(inner);
  const QMargins margins = layout()->contentsMargins();
  const std::array blocks = {title_->heightForWidth(inner), description_->heightForWidth(inner),
                             std::max(progress, error), ModelDownloadView::kLogHeightPt,
                             std::max(skip_->sizeHint().height(), retry_->sizeHint().height())};
  int height = margins.top() + margins.bottom() - ModelDownloadView::kSpacingPt;
  for (const int block : blocks) height += block + ModelDownloadView::kSpacingPt;
  return height;
}

void DownloadForm::changeEvent(QEvent* event) {
  FormContent::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) applyStyle();
}

// Blocks ------------------------------------------------------------------------------------------

QLabel* DownloadForm::makeLabel(std::string_view text) {
  auto* const label = new QLabel(formText(text), this);
  label->setTextFormat(Qt::PlainText);
  label->setAlignment(Qt::AlignCenter);
  label->setWordWrap(true);
  return label;
}

QWidget* DownloadForm::makeProgress() {
  progress_ = new QWidget(this);
  auto* const stack = new QVBoxLayout(progress_);
  stack->setContentsMargins(ModelDownloadView::kProgressSidePaddingPt, 0,
                            ModelDownloadView::kProgressSidePaddingPt, 0);
  stack->setSpacing(ModelDownloadView::kProgressSpacingPt);
  bar_ = new QProgressBar(progress_);
  bar_->setRange(0, kBarSteps);
  bar_->setTextVisible(false);
  bar_->setAccessibleName("Download progress");
  amount_ = makeLabel({});
  stack->addWidget(bar_);
  stack->addWidget(amount_);
  return progress_;
}

QWidget* DownloadForm::makeLog() {
  log_ = new LogView(ModelDownloadView::kLogLineSpacingPt, ModelDownloadView::kLogCornerRadiusPt,
                     this);
  log_->setFixedHeight(ModelDownloadView::kLogHeightPt);
  log_->setTextName("Download log");
  return log_;
}

QWidget* DownloadForm::makeError() {
  error_ = new QWidget(this);
  auto* const stack = new QVBoxLayout(error_);
  stack->setContentsMargins(0, 0, 0, 0);
  message_ = makeLabel({});
  hint_ = makeLabel(ModelDownloadView::kErrorHint);
  stack->addWidget(message_);
  stack->addWidget(hint_);
  return error_;
}

QWidget* DownloadForm::makeButtons() {
  auto* const row = new QWidget(this);
  auto* const stack = new QHBoxLayout(row);
  stack->setContentsMargins(0, 0, 0, 0);
  skip_ = new QPushButton(controlText(ModelDownloadView::kSkipTitle, 'S'), row);
  retry_ = makeLargeButton(controlText(ModelDownloadView::kRetryTitle, 'R'), row);
  for (QPushButton* const button : {skip_, retry_}) button->setAutoDefault(false);
  connect(skip_, &QPushButton::clicked, this, [this] { form_->skip(); });
  connect(retry_, &QPushButton::clicked, this, [this] { form_->retry(); });
  stack->addWidget(skip_);
  stack->addStretch();
  stack->addWidget(retry_);
  // A hidden button keeps its place, so that the window keeps its size.
  QSizePolicy policy = retry_->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  retry_->setSizePolicy(policy);
  return row;
}

void DownloadForm::applyStyle() {
  title_->setFont(headline(font()));
  amount_->setFont(monospacedCaption(font()));
  log_->setTextFont(monospacedCaption(font()));
  for (QLabel* const label : {message_, hint_}) label->setFont(caption(font()));
  const QPalette own = palette();
  for (QLabel* const label : {description_, amount_}) {
    label->setPalette(withTextColor(own, secondaryColor(own)));
  }
  message_->setPalette(withTextColor(own, errorColor(own)));
  hint_->setPalette(withTextColor(own, hintColor(own)));
}

// Following the form ------------------------------------------------------------------------------

void DownloadForm::formChanged() {
  const std::size_t lines = form_->logLines().size();
  if (lines < seenLines_) log_->clear();
  seenLines_ = lines;
  if (form_->downloadState().kind != seenKind_) {
    refresh();
  } else if (!nextFrame_.isActive()) {
    nextFrame_.start(kFrame);
  }
}

void DownloadForm::refresh() {
  seenKind_ = form_->downloadState().kind;
  const double fraction = std::clamp(form_->downloadProgress(), 0.0, 1.0);
  bar_->setValue(static_cast<int>(std::lround(fraction * kBarSteps)));
  setTextOf(*amount_, form_->amountText());
  setTextOf(*message_, form_->downloadState().message);
  progress_->setVisible(form_->showsProgress());
  amount_->setVisible(form_->showsAmount());
  log_->setVisible(form_->showsLog());
  error_->setVisible(form_->showsError());
  retry_->setVisible(form_->showsRetry());
  skip_->setEnabled(form_->skipIsEnabled());
  if (!log_->follow(form_->logLines())) nextFrame_.start(kFrame);
}

}  // namespace voxtrel
