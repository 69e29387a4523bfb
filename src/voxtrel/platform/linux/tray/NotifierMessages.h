#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QImage>
#include <QList>
#include <QString>

namespace voxtrel {

// What org.kde.StatusNotifierItem sends; the comments give the types on the wire.

/// A picture: (iiay). The bytes are rows of alpha, red, green and blue, not premultiplied.
struct NotifierPixmap {
  int width = 0;
  int height = 0;
  QByteArray argb;
};

using NotifierPixmaps = QList<NotifierPixmap>;

/// What is shown while the pointer is on the item: (sa(iiay)ss).
struct NotifierToolTip {
  QString iconName;
  NotifierPixmaps iconPixmaps;
  QString title;
  QString text;
};

NotifierPixmap notifierPixmap(const QImage& image);

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip);

/// Makes the types known to Qt's D-Bus; needed once, before the first message.
void registerNotifierMessages();

}  // namespace voxtrel
