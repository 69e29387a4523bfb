#include "voxtrel/platform/linux/tray/StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QPixmap>
#include <QtEndian>
#include <chrono>
#include <utility>

namespace voxtrel {
namespace {

constexpr std::chrono::milliseconds kQuietAfterIcon{300};

}  // namespace

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

StatusNotifierItem::StatusNotifierItem(const QString& menuPath, Clicks clicks)
    : menu_(menuPath), clicks_(std::move(clicks)) {
  quiet_.setSingleShot(true);
  quiet_.setInterval(kQuietAfterIcon);
  connect(&quiet_, &QTimer::timeout, this, [this] {
    if (std::exchange(isAnnouncedAgain_, false)) emit NewIcon();
  });
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
  isAnnouncedAgain_ = quiet_.isActive() || isAnnouncedAgain_;
  quiet_.start();
}

void StatusNotifierItem::Activate(int x, int y) {
  if (calledFromDBus()) sendErrorReply(QDBusError::UnknownMethod, "the icon opens its menu");
  clicks_.activated({x, y});
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
