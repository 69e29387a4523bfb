#pragma once

#include <QDBusVirtualObject>

namespace voxtrel {

/// What the application answers to on the session bus: org.freedesktop.Application, of which only
/// coming forward means anything here.
/// Thread: the main thread.
class ActivationObject final : public QDBusVirtualObject {
 public:
  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
};

}  // namespace voxtrel
