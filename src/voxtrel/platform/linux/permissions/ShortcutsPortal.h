#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>

namespace voxtrel {

/// Whether the desktop's portal lets programs have global shortcuts, asked over D-Bus.
/// Thread: the main thread; never waits.  Owns: its questions, which end with it unanswered.
/// Fails by: answering no, which an answer that takes more than five seconds counts as.
class ShortcutsPortal {
 public:
  explicit ShortcutsPortal(QDBusConnection bus) : bus_(std::move(bus)) {}

  /// `answer` is called once, never before this returns.
  void ask(std::function<void(bool isOffered)> answer);

 private:
  QDBusConnection bus_;
  QObject questions_;  ///< parent of what waits for answers
};

}  // namespace voxtrel
