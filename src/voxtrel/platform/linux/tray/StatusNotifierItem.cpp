#include "voxtrel/platform/linux/tray/StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QPixmap>
#include <QtEndian>

namespace voxtrel {

NotifierPixmap notifierPixmap(const QImage& image) {
  const QImage source = image.convertToFormat(QImage::Format_ARGB32);
  NotifierPixmap pixmap{source.width(), source.height(), {}};
  const qsizetype rowBytes = qsizetype{4} * source.width();
  pixmap.argb.resize(rowBytes * source.height());
  for (int y = 0; y < source.height(); ++y) {
    qToBigEndian<quint32>(source.constScanLine(y), source.width(),
                          pixmap.argb.data() + y * rowBytes);
  }
  return pixmap;
}

StatusNotifierItem::StatusNotifierItem(const QString& menuPath) : menu_(menuPath) {
  qDBusRegisterMetaType<NotifierPixmap>();
  qDBusRegisterMetaType<NotifierPixmaps>();
  qDBusRegisterMetaType<NotifierToolTip>();
}

void StatusNotifierItem::publish() {
  constexpr quint32 kNoFlags = 0;
  QDBusConnection bus = QDBusConnection::sessionBus();
  bus.registerObject("/StatusNotifierItem", this, QDBusConnection::ExportScriptableContents);
  QDBusMessage request = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName");
  request << busName() << kNoFlags;
  bus.asyncCall(request);
}

QString StatusNotifierItem::busName() {
  return QString("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
}

void StatusNotifierItem::setIcon(const QIcon& icon) {
  icon_ = icon;
  pixmaps_.clear();
  emit NewIcon();
}

const NotifierPixmaps& StatusNotifierItem::iconPixmap() {
  if (pixmaps_.isEmpty()) {
    for (const QSize& size : icon_.availableSizes()) {
      pixmaps_.append(notifierPixmap(icon_.pixmap(size, 1.0).toImage()));
    }
  }
  return pixmaps_;
}

}  // namespace voxtrel
