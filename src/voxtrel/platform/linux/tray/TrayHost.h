#pragma once

#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>

namespace voxtrel {

/// Registers the item with the program that shows the tray, and again with each that replaces it.
/// Thread: the main thread.  Fails by: waiting, because a tray may still appear.
class TrayHost {
 public:
  enum class Kind {
    statusNotifier,  ///< StatusNotifierItem over D-Bus
    xEmbed,          ///< the older X11 tray, used after three seconds without the other
    none,            ///< neither for ten seconds; a tray may still appear
  };

  /// `onFound` is called again when the kind or the host changes, and never before `announce`
  /// returns.
  explicit TrayHost(std::function<void(Kind)> onFound);
  ~TrayHost();
  TrayHost(const TrayHost&) = delete;
  TrayHost& operator=(const TrayHost&) = delete;

  /// `busName`: the item's name on the bus. Does nothing without a session bus.
  void announce(const QString& busName);

 private:
  class XManagerWatch;

  void registerItem();
  void registered();
  void waitForXEmbed();
  void tryXEmbed();

  const std::function<void(Kind)> onFound_;
  QString busName_;
  QObject context_;  ///< owner of calls and connections
  QDBusServiceWatcher watcher_;
  QTimer xEmbedDelay_;
  QTimer noneDelay_;
  std::unique_ptr<XManagerWatch> xManagers_;  ///< null until the delay is over
};

}  // namespace voxtrel
