#include "voxtrel/platform/linux/session/ActivationObject.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>

#include "voxtrel/platform/linux/windows/WindowActivation.h"

namespace voxtrel {

namespace {

constexpr const char* kInterface = "org.freedesktop.Application";

constexpr const char* kIntrospection = R"(  <interface name="org.freedesktop.Application">
    <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
    <method name="Open">
      <arg type="as" name="uris" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg type="s" name="action_name" direction="in"/>
      <arg type="av" name="parameter" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
  </interface>
)";

/// How many arguments the method has, the last of which is the platform's data; 0 for a stranger.
qsizetype argumentCount(const QString& method) {
  if (method == "Activate") return 1;
  if (method == "Open") return 2;
  if (method == "ActivateAction") return 3;
  return 0;
}

}  // namespace

QString ActivationObject::introspect(const QString&) const {
  return kIntrospection;
}

bool ActivationObject::handleMessage(const QDBusMessage& message,
                                     const QDBusConnection& connection) {
  const auto count = argumentCount(message.member());
  const bool isOurs = message.interface().isEmpty() || message.interface() == kInterface;
  if (!isOurs || count == 0) return false;
  const auto arguments = message.arguments();
  if (arguments.size() != count || !message.signature().endsWith("a{sv}")) {
    return connection.send(message.createErrorReply(QDBusError::InvalidArgs, "wrong arguments"));
  }
  const auto data = qdbus_cast<QVariantMap>(arguments.last());
  bringForward(data.value("activation-token").toString());
  return connection.send(message.createReply());
}

}  // namespace voxtrel
