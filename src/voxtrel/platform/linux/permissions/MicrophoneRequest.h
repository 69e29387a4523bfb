#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QVariantMap>
#include <functional>

#include "voxtrel/platform/Log.h"

namespace voxtrel {

/// One question to the desktop's portal for the microphone. The call has 25 seconds to be accepted;
/// from then on the user has all the time they need.
/// Thread: the main thread; never waits.  Borrows: Log.
/// Fails by: a portal that is missing, refuses to be asked or goes away guards nothing: the
/// microphone is granted, with one line in the log.
class MicrophoneRequest final : public QObject {
  Q_OBJECT

 public:
  /// Asks at once. `answer` is called once, later; the object then deletes itself.
  MicrophoneRequest(QDBusConnection bus, Log& log, std::function<void(bool granted)> answer,
                    QObject* parent);

 private:
  Q_SLOT void onResponse(uint response, const QVariantMap& results);
  Q_SLOT void onOwnerChanged(const QString& name, const QString& before, const QString& after);
  void listen(const QString& handle);
  void call(const QString& token);
  void onAccepted(QDBusPendingCallWatcher* call);
  void grantUnguarded(const QString& reason);
  void finish(bool granted);

  QDBusConnection bus_;
  Logger logger_;
  std::function<void(bool granted)> answer_;  ///< null once given
  QString handle_;                            ///< the path at which the portal answers
};

}  // namespace voxtrel
