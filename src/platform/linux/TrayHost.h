#pragma once

#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>

class QDBusServiceWatcher;

namespace voxtrel {

class XManagerWatch;

/// Waits for something that shows tray icons. Qt settles how it shows ours at the first call to its
/// tray and never thinks again, so that call has to wait.
/// Thread: the main thread.  Fails by: waiting for ever, which is what a desktop without a tray
/// needs.
class TrayHost {
 public:
  enum class Kind {
    statusNotifier,  ///< StatusNotifierItem over D-Bus
    xEmbed,          ///< the older X11 tray, used where nothing better came within three seconds
  };

  /// `onFound` is called once, never before this returns.
  explicit TrayHost(std::function<void(Kind)> onFound);
  ~TrayHost();
  TrayHost(const TrayHost&) = delete;
  TrayHost& operator=(const TrayHost&) = delete;

 private:
  void askForNotifierHost(std::function<void()> onAbsent);
  void waitForNotifierHost();
  void tryXEmbed();
  void found(Kind kind);

  std::function<void(Kind)> onFound_;
  QObject context_;  ///< answers that come when it is gone are dropped
  std::unique_ptr<QDBusServiceWatcher> watcher_;
  QTimer xEmbedDelay_;
  std::unique_ptr<XManagerWatch> xManagers_;  ///< once the delay is over
};

}  // namespace voxtrel
