#include "voxtrel/platform/linux/tray/MenuMessages.h"

#include <QDBusMetaType>

namespace voxtrel {

namespace {

template <typename... Fields>
QDBusArgument& write(QDBusArgument& argument, const Fields&... fields) {
  argument.beginStructure();
  (argument << ... << fields);
  argument.endStructure();
  return argument;
}

template <typename... Fields>
const QDBusArgument& read(const QDBusArgument& argument, Fields&... fields) {
  argument.beginStructure();
  (argument >> ... >> fields);
  argument.endStructure();
  return argument;
}

}  // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const MenuNode& node) {
  return write(argument, node.id, node.properties, node.children);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& node) {
  return read(argument, node.id, node.properties, node.children);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuRowProperties& row) {
  return write(argument, row.id, row.properties);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuRowProperties& row) {
  return read(argument, row.id, row.properties);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuRowRemovals& row) {
  return write(argument, row.id, row.names);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuRowRemovals& row) {
  return read(argument, row.id, row.names);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event) {
  return write(argument, event.id, event.type, event.data, event.timestamp);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event) {
  return read(argument, event.id, event.type, event.data, event.timestamp);
}

void registerMenuMessages() {
  qDBusRegisterMetaType<MenuNode>();
  qDBusRegisterMetaType<MenuRowProperties>();
  qDBusRegisterMetaType<QList<MenuRowProperties>>();
  qDBusRegisterMetaType<MenuRowRemovals>();
  qDBusRegisterMetaType<QList<MenuRowRemovals>>();
  qDBusRegisterMetaType<MenuEvent>();
  qDBusRegisterMetaType<QList<MenuEvent>>();
  qDBusRegisterMetaType<MenuShortcut>();
}

}  // namespace voxtrel
