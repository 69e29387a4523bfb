#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <stdexcept>

namespace voxtrel::testing {

/// A session bus for one test.
/// Thread: the test's.  Owns: the bus, which ends with it.
/// Fails by: an exception, which fails the test.
class PrivateBus {
 public:
  PrivateBus() {
    daemon_.start("dbus-daemon", {"--session", "--nofork", "--nopidfile", "--print-address=1"});
    if (!daemon_.waitForReadyRead(10000)) throw std::runtime_error("no dbus-daemon");
    address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
  }
  ~PrivateBus() {
    daemon_.kill();
    daemon_.waitForFinished();
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  /// Opens the connection `name`; QDBusConnection::disconnectFromBus ends it.
  QDBusConnection connect(const QString& name) const {
    QDBusConnection connection = QDBusConnection::connectToBus(address_, name);
    if (!connection.isConnected()) throw std::runtime_error("cannot connect to the private bus");
    return connection;
  }

 private:
  QProcess daemon_;
  QString address_;
};

}  // namespace voxtrel::testing
