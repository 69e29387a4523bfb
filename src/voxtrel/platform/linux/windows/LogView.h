#pragma once

#include <QFrame>
#include <string>
#include <vector>

class QPlainTextEdit;

namespace voxtrel {

/// Lines of text, the newest in view: read-only, to be selected and copied, older ones reachable by
/// scrolling however many there are. When they come faster than a text can take them up, the newest
/// are shown first, and those passed over follow as soon as there is time.
/// Thread: the main thread.  Owns: a copy of the lines.
class LogView final : public QFrame {
 public:
  /// `lineSpacing` lies between two lines; `cornerRadius` rounds the background's corners.
  LogView(int lineSpacing, int cornerRadius, QWidget* parent);

  /// Shows `lines`, which begins with the lines shown already unless `clear` was called. False: some
  /// are still to follow; call again.
  [[nodiscard]] bool follow(const std::vector<std::string>& lines);
  void clear();

  void setTextFont(const QFont& font);
  /// What assistive technology calls the text.
  void setTextName(const QString& name);

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  using Lines = std::vector<std::string>;

  void showNewest(const Lines& lines);
  void showPassedOver(const Lines& lines, std::size_t atMost);
  void append(const Lines& lines, std::size_t first, std::size_t end);
  void dropAfterHead();
  void select(int anchor, int position);
  void scrollToNewest();

  const int cornerRadius_;
  QPlainTextEdit* const text_;
  // Shown are the lines before `head_` and those from `tail_` to `end_`.
  std::size_t head_ = 0;
  std::size_t tail_ = 0;
  std::size_t end_ = 0;
};

}  // namespace voxtrel
