#pragma once

#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>

namespace voxtrel {

class XManagerWatch;

/// Announces the item to the program that keeps the tray, at once and to each that comes later.
/// Thread: the main thread.  Fails by: waiting for ever, which is what a desktop without a tray
/// needs.
class TrayHost {
 public:
  enum class Kind {
    statusNotifier,  ///< StatusNotifierItem over D-Bus
    xEmbed,          ///< the older X11 tray, used while nothing better has come for three seconds
  };

  /// `onFound` is called again when the kind changes or the host is another, and never before
  /// `announce` returns.
  explicit TrayHost(std::function<void(Kind)> onFound);
  ~TrayHost();
  TrayHost(const TrayHost&) = delete;
  TrayHost& operator=(const TrayHost&) = delete;

  /// `busName`: where the item is to be found from now on.
  void announce(const QString& busName);

 private:
  void registerItem();
  void registered();
  void waitForXEmbed();
  void tryXEmbed();

  const std::function<void(Kind)> onFound_;
  QString busName_;
  QObject context_;  ///< answers that come when it is gone are dropped
  QDBusServiceWatcher watcher_;
  QTimer xEmbedDelay_;
  std::unique_ptr<XManagerWatch> xManagers_;  ///< once the delay is over
};

}  // namespace voxtrel
