#pragma once

#include <QDBusArgument>
#include <tuple>

namespace voxtrel {

/// A struct that D-Bus sends as a structure. `fields(self)` returns its fields with std::tie.
template <typename Message>
concept DBusStructure = requires(Message message) {
  Message::fields(message);
};

template <DBusStructure Message>
QDBusArgument& operator<<(QDBusArgument& argument, const Message& message) {
  argument.beginStructure();
  std::apply([&](const auto&... field) { (argument << ... << field); }, Message::fields(message));
  argument.endStructure();
  return argument;
}

template <DBusStructure Message>
const QDBusArgument& operator>>(const QDBusArgument& argument, Message& message) {
  argument.beginStructure();
  std::apply([&](auto&... field) { (argument >> ... >> field); }, Message::fields(message));
  argument.endStructure();
  return argument;
}

}  // namespace voxtrel
