#pragma once

#include <QDBusPendingCall>
#include <QObject>
#include <QVariantMap>
#include <functional>
#include <optional>
#include <utility>

#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// Owns the application's name on the session bus, which only one process of a session can have, and
/// answers org.freedesktop.Application under it: the actions "settings", "restart" and "quit"; every
/// other call brings the windows forward.
/// Thread: the main thread.  Borrows: Log.
/// Fails by: one line in the log if there is no session bus; every process then counts as the first.
class SingleInstance final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  /// Requests the name without waiting for the reply.
  explicit SingleInstance(Log& log);

  /// False if another process already has the name; that one was told `request`. Blocks for the reply,
  /// two seconds at most.
  bool isFirst(StartRequest request);
  /// Called at each of those calls, before the windows come forward. What may take long is called after
  /// the caller got its reply.
  void setOnRequest(std::function<void(StartRequest)> onRequest) {
    onRequest_ = std::move(onRequest);
  }

  // NOLINTBEGIN(readability-identifier-naming): named by the interface.
  Q_SCRIPTABLE void Activate(const QVariantMap& platform_data);
  Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platform_data);
  Q_SCRIPTABLE void ActivateAction(const QString& action_name, const QVariantList& parameter,
                                   const QVariantMap& platform_data);
  // NOLINTEND(readability-identifier-naming)

 private:
  void take(StartRequest request, const QString& activationToken);

  Logger log_;
  std::function<void(StartRequest)> onRequest_;
  std::optional<QDBusPendingCall> nameRequest_;
};

}  // namespace voxtrel
