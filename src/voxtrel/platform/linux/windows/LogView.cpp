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

/// More than are ever in view; if more than these come at a time, those before are passed over.
constexpr std::size_t kNewest = 200;

/// How many of those passed over are taken up at a time: a small part of a tenth of a second while
/// nothing else happens, hardly anything of a frame while lines still pour in.
constexpr std::size_t kWhenCalm = 3000;
constexpr std::size_t kWhenBusy = 300;

/// The lines as one text, a line to each of the document's blocks.
QString joined(const std::vector<std::string>& lines, std::size_t first, std::size_t end) {
  QString text;
  for (std::size_t line = first; line < end; ++line) {
    if (line > first) text += '\n';
    text += QString::fromStdString(lines[line]);
  }
  // Noncharacters that a document takes for the borders of a frame.
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

bool LogView::follow(const Lines& lines) {
  const bool isBusy = lines.size() - end_ > kNewest;
  if (lines.size() > end_) showNewest(lines);
  if (head_ < tail_) showPassedOver(lines, isBusy ? kWhenBusy : kWhenCalm);
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
  if (head_ == tail_) head_ = tail_ = end_;  // nothing is missing: all that is shown is the head
  std::size_t first = end_;
  if (lines.size() - end_ > kNewest) {
    dropAfterHead();
    first = tail_ = lines.size() - kNewest;
  }
  append(lines, first, lines.size());
  end_ = lines.size();
  scrollToNewest();
}

/// Between the head and what comes after it.
void LogView::showPassedOver(const Lines& lines, std::size_t atMost) {
  const QScrollBar* const bar = text_->verticalScrollBar();
  const bool isAtNewest = bar->value() == bar->maximum();
  const std::size_t end = std::min(tail_, head_ + atMost);
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

/// In one insertion: each costs a new layout of what is in view.
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
