#pragma once

#include <QMessageBox>
#include <QPointer>
#include <QString>

namespace voxtrel {

/// A small box that tells the user something and leaves the application usable meanwhile.
/// Thread: the main thread.  Owns: its window while that is open, never more than one.
class NoticeBox {
 public:
  NoticeBox() = default;
  ~NoticeBox();
  NoticeBox(const NoticeBox&) = delete;
  NoticeBox& operator=(const NoticeBox&) = delete;

  /// Opens the box; one that is open already comes to the front.
  void show(const QString& title, const QString& text, const QString& details);

 private:
  QPointer<QMessageBox> box_;
};

}  // namespace voxtrel
