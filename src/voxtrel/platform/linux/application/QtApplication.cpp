#include "voxtrel/platform/linux/application/QtApplication.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QWidget>

#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {

int QtApplication::run(ApplicationDelegate& delegate) {
  QSocketNotifier signalArrived(signals_.descriptor(), QSocketNotifier::Read);
  QObject::connect(&signalArrived, &QSocketNotifier::activated, &signalArrived, [&] {
    signals_.take();
    delegate.quitRequested();
  });
  // Inside the loop, because `terminate` has no effect before it runs.
  QMetaObject::invokeMethod(
      &signalArrived, [&] { delegate.applicationDidFinishLaunching(); }, Qt::QueuedConnection);
  delegate_ = &delegate;
  const int status = QApplication::exec();
  delegate_ = nullptr;
  delegate.applicationWillTerminate();
  return status;
}

void QtApplication::take(StartRequest request) {
  if (delegate_ == nullptr) return;
  switch (request) {
    case StartRequest::open:
      return delegate_->reopenRequested();
    case StartRequest::settings:
      return delegate_->settingsRequested();
    case StartRequest::restart:
      return delegate_->restartRequested();
    case StartRequest::quit:
      return delegate_->quitRequested();
  }
}

void QtApplication::terminate() {
  // Not quit(): a window that refuses to close must not keep the application alive.
  QCoreApplication::exit(0);
}

QIcon applicationIcon() {
  return QIcon(":/icons/org.voxtrel.Voxtrel.svg");
}

void bringForward(const QString& activationToken) {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (!window->isVisible() || window->windowType() == Qt::Popup ||
        window->testAttribute(Qt::WA_ShowWithoutActivating)) {
      continue;
    }
    if (!activationToken.isEmpty())
      setStartupId(static_cast<xcb_window_t>(window->winId()), activationToken.toUtf8());
    window->raise();
    window->activateWindow();
  }
}

}  // namespace voxtrel
