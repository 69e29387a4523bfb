#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QStringList>
#include <QVariantMap>

namespace voxtrel {

// What com.canonical.dbusmenu sends and receives; the comments give the types on the wire.

/// A row and the rows below it: (ia{sv}av), each child a MenuNode.
struct MenuNode {
  int id = 0;
  QVariantMap properties;
  QVariantList children;
};

/// Properties of one row: (ia{sv}).
struct MenuRowProperties {
  int id = 0;
  QVariantMap properties;
};

/// Properties that a row has no longer: (ias).
struct MenuRowRemovals {
  int id = 0;
  QStringList names;
};

/// Something that the user did to a row: (isvu).
struct MenuEvent {
  int id = 0;
  QString type;
  QDBusVariant data;
  uint timestamp = 0;
};

/// Alternative key combinations, each named key by key: aas.
using MenuShortcut = QList<QStringList>;

QDBusArgument& operator<<(QDBusArgument& argument, const MenuNode& node);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& node);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuRowProperties& row);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuRowProperties& row);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuRowRemovals& row);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuRowRemovals& row);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event);

/// Makes the types known to Qt's D-Bus; needed once, before the first message.
void registerMenuMessages();

}  // namespace voxtrel
