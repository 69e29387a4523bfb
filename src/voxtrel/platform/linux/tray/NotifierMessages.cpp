#include "voxtrel/platform/linux/tray/NotifierMessages.h"

#include <QDBusMetaType>
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

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap) {
  argument.beginStructure();
  argument << pixmap.width << pixmap.height << pixmap.argb;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap) {
  argument.beginStructure();
  argument >> pixmap.width >> pixmap.height >> pixmap.argb;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip) {
  argument.beginStructure();
  argument << toolTip.iconName << toolTip.iconPixmaps << toolTip.title << toolTip.text;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip) {
  argument.beginStructure();
  argument >> toolTip.iconName >> toolTip.iconPixmaps >> toolTip.title >> toolTip.text;
  argument.endStructure();
  return argument;
}

void registerNotifierMessages() {
  qDBusRegisterMetaType<NotifierPixmap>();
  qDBusRegisterMetaType<NotifierPixmaps>();
  qDBusRegisterMetaType<NotifierToolTip>();
}

}  // namespace voxtrel
