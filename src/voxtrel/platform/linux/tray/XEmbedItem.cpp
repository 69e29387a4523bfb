#include "voxtrel/platform/linux/tray/XEmbedItem.h"

namespace voxtrel {

XEmbedItem::XEmbedItem(const std::vector<MenuItem>& rows, const QIcon& icon)
    : menu_(rows), tray_(icon) {
  tray_.setContextMenu(&menu_.widget());
  // Qt opens it for the right button only.
  QObject::connect(&tray_, &QSystemTrayIcon::activated, &tray_,
                   [this](QSystemTrayIcon::ActivationReason reason) {
                     if (reason == QSystemTrayIcon::Trigger) menu_.toggleAtPointer();
                   });
  tray_.show();
}

}  // namespace voxtrel
