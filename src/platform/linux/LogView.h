#pragma once

#include <QFrame>
#include <string>
#include <vector>

class QPlainTextEdit;

namespace voxtrel {

/// Lines of text, the newest in view: read-only, to be selected and copied, older ones reachable by
/// scrolling however many there are.
/// Thread: the main thread.  Owns: a copy of the lines.
class LogView final : public QFrame {
 public:
  /// `lineSpacing` lies between two lines; `cornerRadius` rounds the background's corners.
  LogView(int lineSpacing, int cornerRadius, QWidget* parent);

  /// Shows `lines`, which begins with the lines shown already unless `clear` was called. Takes a
  /// bounded number at a time; false: call again for the rest.
  [[nodiscard]] bool follow(const std::vector<std::string>& lines);
  void clear();

  void setTextFont(const QFont& font);
  /// What assistive technology calls the text.
  void setTextName(const QString& name);

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void append(const std::string* first, const std::string* last);
  void select(int anchor, int position);
  void scrollToNewest();

  const int cornerRadius_;
  QPlainTextEdit* const text_;
  std::size_t shown_ = 0;
};

}  // namespace voxtrel
