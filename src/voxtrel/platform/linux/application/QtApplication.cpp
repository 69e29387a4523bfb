#include "voxtrel/platform/linux/application/QtApplication.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QWidget>

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
  const int status = QApplication::exec();
  delegate.applicationWillTerminate();
  return status;
}

void QtApplication::terminate() {
  // Not quit(): a window that refuses to close must not keep the application alive.
  QCoreApplication::exit(0);
}

QIcon applicationIcon() {
  return QIcon(":/icons/org.voxtrel.Voxtrel.svg");
}

void bringForward(const QString& activationToken) {
  // Qt reads the token from here when it activates a window.
  constexpr const char* kTokenVariable = "XDG_ACTIVATION_TOKEN";
  if (!activationToken.isEmpty()) qputenv(kTokenVariable, activationToken.toUtf8());
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    if (!window->isVisible() || window->windowType() == Qt::Popup ||
        window->testAttribute(Qt::WA_ShowWithoutActivating)) {
      continue;
    }
    window->raise();
    window->activateWindow();
  }
  qunsetenv(kTokenVariable);
}

}  // namespace voxtrel
