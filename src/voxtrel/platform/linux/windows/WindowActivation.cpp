#include "voxtrel/platform/linux/windows/WindowActivation.h"

#include <QApplication>
#include <QWidget>

namespace voxtrel {

void bringForward(const QString& activationToken) {
  // Qt reads it when it activates a window.
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
