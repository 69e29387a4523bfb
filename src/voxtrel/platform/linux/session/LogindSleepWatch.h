#pragma once

#include <QObject>
#include <list>
#include <memory>

#include "common/posix/FileDescriptor.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/SleepWatch.h"
#include "voxtrel/platform/linux/dbus/SystemBus.h"

namespace voxtrel {

/// Reports sleep and wake as announced by the login manager. While the machine is awake, this holds
/// a "delay" lock, so that the machine waits until every will-sleep handler has returned.
/// Thread: the main thread.  Owns: the connection to the system bus, the lock.  Borrows: Log.
/// Fails by: one line in the log; then no sleep is reported.
class LogindSleepWatch final : public SleepWatch {
 public:
  /// Connects later, once the event loop runs.
  explicit LogindSleepWatch(Log& log);
  ~LogindSleepWatch() override;

  [[nodiscard]] Subscription onWillSleep(std::function<void()> handler) override;
  [[nodiscard]] Subscription onDidWake(std::function<void()> handler) override;

 private:
  using Handlers = std::list<std::function<void()>>;

  void connect();
  void takeLock();
  void onLockReply(sd_bus_message& reply);
  void prepareForSleep(sd_bus_message& signal);
  void ownerChanged(sd_bus_message& signal);
  void reportOnce(const std::string& reason);
  static Subscription subscribe(const std::shared_ptr<Handlers>& handlers,
                                std::function<void()> handler);
  static void callAll(const std::shared_ptr<Handlers>& handlers);

  Logger log_;
  std::shared_ptr<Handlers> onWillSleep_ = std::make_shared<Handlers>();
  std::shared_ptr<Handlers> onDidWake_ = std::make_shared<Handlers>();
  bool isGoingToSleep_ = false;
  bool isReported_ = false;
  FileDescriptor lock_;
  QObject context_;
  std::unique_ptr<Bus> bus_;
};

}  // namespace voxtrel
