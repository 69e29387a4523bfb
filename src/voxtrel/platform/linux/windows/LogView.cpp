#include "voxtrel/platform/linux/windows/LogView.h"

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

/// More lines than fit into view. If more arrive at once, the older ones are skipped.
constexpr std::size_t kMaxNewest = 200;

/// Skipped lines inserted per call: well below 100 ms of work when calm, a small part of a frame while
/// lines still pour in.
constexpr std::size_t kMaxSkippedWhenCalm = 3000;
constexpr std::size_t kMaxSkippedWhenBusy = 300;

/// The lines as one text with one line per block of the document.
QString joined(const std::vector<std::string>& lines, std::size_t first, std::size_t end) {
  QString text;
  for (std::size_t line = first; line < end; ++line) {
    if (line > first) text += '\n';
    text += QString::fromStdString(lines[line]);
  }
  // QTextDocument reads these noncharacters as the borders of a frame.
  constexpr char16_t kFrameBegin = 0xFDD0, kFrameEnd = 0xFDD1;
  text.replace(QChar(kFrameBegin), QChar(QChar::ReplacementCharacter));
  text.replace(QChar(kFrameEnd), QChar(QChar::ReplacementCharacter));
  return text;
}

QTextCursor endOfBlock(QTextDocument& document, std::size_t number) {
  QTextCursor cursor(document.findBlockByNumber(static_cast<int>(number)));
  cursor.movePosition(QTextCursor::EndOfBlock);
  return cursor;
}

/// Adds space below every block.
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
  constexpr int kInset = 2;  // keeps the text's square corners inside the rounded ones
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

bool LogView::follow(const Lines& lines) {
  const bool isBusy = lines.size() - end_ > kMaxNewest;
  if (lines.size() > end_) showNewest(lines);
  if (head_ < tail_) showSkipped(lines, isBusy ? kMaxSkippedWhenBusy : kMaxSkippedWhenCalm);
  return head_ == tail_;
}

void LogView::clear() {
  text_->clear();
  head_ = tail_ = end_ = 0;
}

void LogView::setTextFont(const QFont& font) {
  text_->setFont(font);
}

void LogView::setTextName(const QString& name) {
  text_->setAccessibleName(name);
}

void LogView::showNewest(const Lines& lines) {
  if (head_ == tail_) head_ = tail_ = end_;  // no line is missing
  std::size_t first = end_;
  if (lines.size() - end_ > kMaxNewest) {
    dropAfterHead();
    first = tail_ = lines.size() - kMaxNewest;
  }
  append(lines, first, lines.size());
  end_ = lines.size();
  scrollToNewest();
}

/// Inserts the next skipped lines after the head.
void LogView::showSkipped(const Lines& lines, std::size_t maxLines) {
  const QScrollBar* const bar = text_->verticalScrollBar();
  const bool isAtNewest = bar->value() == bar->maximum();
  const std::size_t end = std::min(tail_, head_ + maxLines);
  const QString added = joined(lines, head_, end);
  if (head_ == 0) {
    QTextCursor(text_->document()).insertText(added + '\n');
  } else {
    endOfBlock(*text_->document(), head_ - 1).insertText('\n' + added);
  }
  head_ = end;
  if (head_ == tail_) head_ = tail_ = end_;
  if (isAtNewest) scrollToNewest();
}

/// With a single insertion, because each one lays out the visible text again.
void LogView::append(const Lines& lines, std::size_t first, std::size_t end) {
  const QTextCursor users = text_->textCursor();
  const int anchor = users.anchor();
  const int position = users.position();
  QTextCursor cursor(text_->document());
  cursor.movePosition(QTextCursor::End);
  const QString separator = text_->document()->isEmpty() ? "" : "\n";
  cursor.insertText(separator + joined(lines, first, end));
  if (anchor != position) select(anchor, position);
}

void LogView::dropAfterHead() {
  if (head_ == 0) {
    text_->clear();
    return;
  }
  QTextCursor dropped = endOfBlock(*text_->document(), head_ - 1);
  dropped.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
  dropped.removeSelectedText();
}

/// Restores the selection: one that reaches the end would grow with the text.
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
