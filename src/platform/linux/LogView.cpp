#include "platform/linux/LogView.h"

#include <QEvent>
#include <QPainter>
#include <QPlainTextDocumentLayout>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QVBoxLayout>
#include <algorithm>

namespace voxtrel {

namespace {

/// As many lines as go into the text within a small part of a tenth of a second.
constexpr std::size_t kLinesAtATime = 5000;

/// Puts room below every paragraph.
class SpacedLayout final : public QPlainTextDocumentLayout {
 public:
  SpacedLayout(QTextDocument* document, int spacing)
      : QPlainTextDocumentLayout(document), spacing_(spacing) {}

  QRectF blockBoundingRect(const QTextBlock& block) const override {
    QRectF place = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (block.isVisible()) place.setHeight(place.height() + spacing_);
    return place;
  }

 private:
  const int spacing_;
};

}  // namespace

LogView::LogView(int lineSpacing, int cornerRadius, QWidget* parent)
    : QFrame(parent), cornerRadius_(cornerRadius), text_(new QPlainTextEdit(this)) {
  constexpr int kInset = 2;  // keeps the text's square corners within the rounded ones
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(kInset, kInset, kInset, kInset);
  layout->addWidget(text_);
  text_->setUndoRedoEnabled(false);
  text_->setReadOnly(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text_->setFrameShape(QFrame::NoFrame);
  text_->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  text_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  text_->setTabChangesFocus(true);
  text_->document()->setDocumentMargin(kInset);
  text_->document()->setDocumentLayout(new SpacedLayout(text_->document(), lineSpacing));
  text_->installEventFilter(this);
  setFocusProxy(text_);
}

bool LogView::follow(const std::vector<std::string>& lines) {
  const std::size_t count = std::min(kLinesAtATime, lines.size() - shown_);
  if (count > 0) {
    append(lines.data() + shown_, lines.data() + shown_ + count);
    scrollToNewest();
  }
  return shown_ == lines.size();
}

void LogView::clear() {
  text_->clear();
  shown_ = 0;
}

void LogView::setTextFont(const QFont& font) {
  text_->setFont(font);
}

void LogView::setTextName(const QString& name) {
  text_->setAccessibleName(name);
}

/// In one insertion: each costs a new layout of what is in view.
void LogView::append(const std::string* first, const std::string* last) {
  QString added;
  for (const std::string* line = first; line != last; ++line) {
    if (shown_++ > 0) added += '\n';
    added += QString::fromStdString(*line);
  }
  const QTextCursor users = text_->textCursor();
  const int anchor = users.anchor();
  const int position = users.position();
  QTextCursor end(text_->document());
  end.movePosition(QTextCursor::End);
  end.insertText(added);
  if (anchor != position) select(anchor, position);
}

/// What is selected up to the end would grow with it.
void LogView::select(int anchor, int position) {
  QTextCursor users = text_->textCursor();
  users.setPosition(anchor);
  users.setPosition(position, QTextCursor::KeepAnchor);
  text_->setTextCursor(users);
}

void LogView::scrollToNewest() {
  QScrollBar* const bar = text_->verticalScrollBar();
  bar->setValue(bar->maximum());
}

void LogView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor background = palette().color(QPalette::Base);
  painter.setBrush(background);
  painter.setPen(text_->hasFocus() ? palette().color(QPalette::Highlight) : background);
  constexpr double kHalfPen = 0.5;
  painter.drawRoundedRect(QRectF(rect()).adjusted(kHalfPen, kHalfPen, -kHalfPen, -kHalfPen),
                          cornerRadius_, cornerRadius_);
}

bool LogView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
  return QFrame::eventFilter(watched, event);
}

}  // namespace voxtrel
