#pragma once

#include <QFrame>
#include <string>
#include <vector>

class QPlainTextEdit;

namespace voxtrel {

/// A read-only log: shows the newest line, scrolls back to all others, and lets the user select and
/// copy. When lines come too fast, the newest are inserted first and the skipped ones later.
/// Thread: the main thread.  Owns: a copy of the lines.
class LogView final : public QFrame {
 public:
  /// `lineSpacing` between two lines and `cornerRadius` of the background, in points.
  LogView(int lineSpacing, int cornerRadius, QWidget* parent);

  /// Shows `lines`, which must begin with the lines of the last call unless `clear` was called. False
  /// if lines are still missing: call again.
  [[nodiscard]] bool follow(const std::vector<std::string>& lines);
  void clear();

  void setTextFont(const QFont& font);
  /// The name for assistive technology.
  void setTextName(const QString& name);

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  using Lines = std::vector<std::string>;

  void showNewest(const Lines& lines);
  void showSkipped(const Lines& lines, std::size_t maxLines);
  void append(const Lines& lines, std::size_t first, std::size_t end);
  void dropAfterHead();
  void select(int anchor, int position);
  void scrollToNewest();

  const int cornerRadius_;
  QPlainTextEdit* const text_;
  // Shown: the lines before `head_` and those from `tail_` to `end_`.
  std::size_t head_ = 0;
  std::size_t tail_ = 0;
  std::size_t end_ = 0;
};

}  // namespace voxtrel
