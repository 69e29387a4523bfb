#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <functional>

namespace voxtrel::testing {

/// Stands in for the desktop's portal; the test decides the reply to each call.
/// Thread: the test's.
class PortalDouble final : public QDBusVirtualObject {
 public:
  explicit PortalDouble(QDBusConnection bus) : bus_(std::move(bus)) {
    bus_.registerVirtualObject("/org/freedesktop/portal/desktop", this);
    bus_.registerService(kName);
  }
  ~PortalDouble() override { leave(); }

  /// Releases the name, as a portal that ends does.
  void leave() { bus_.unregisterService(kName); }

  /// Sends the user's response to the caller.
  void respond(const QDBusMessage& call, const QString& handle, uint response) {
    QDBusMessage signal = QDBusMessage::createTargetedSignal(
        call.service(), handle, "org.freedesktop.portal.Request", "Response");
    signal << response << QVariantMap();
    bus_.send(signal);
  }
  void reply(const QDBusMessage& call, const QVariant& value) {
    bus_.send(call.createReply(value));
  }
  void refuse(const QDBusMessage& call, const QString& error) {
    bus_.send(call.createErrorReply(error, "not here"));
  }

  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
    message.setDelayedReply(true);
    ++calls;
    if (onCall) onCall(message);
    return true;
  }

  std::function<void(const QDBusMessage&)> onCall;
  int calls = 0;

 private:
  static constexpr const char* kName = "org.freedesktop.portal.Desktop";
  QDBusConnection bus_;
};

}  // namespace voxtrel::testing
