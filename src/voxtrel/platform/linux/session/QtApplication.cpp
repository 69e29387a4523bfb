#include "voxtrel/platform/linux/session/QtApplication.h"

#include <QApplication>
#include <QSocketNotifier>

namespace voxtrel {

int QtApplication::run(ApplicationDelegate& delegate) {
  QSocketNotifier signalArrived(signals_.descriptor(), QSocketNotifier::Read);
  QObject::connect(&signalArrived, &QSocketNotifier::activated, &signalArrived, [&] {
    signals_.take();
    delegate.quitRequested();
  });
  // From within the loop, because `terminate` has no effect before it runs.
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

}  // namespace voxtrel
