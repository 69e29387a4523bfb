#include "voxtrel/platform/linux/dbus/SystemBus.h"

#include <QSocketNotifier>
#include <QTimer>
#include <utility>

namespace voxtrel {

namespace {

/// Thread: the main thread.
class QtBusWait final : public BusWait {
 public:
  void start(int descriptor, std::function<void()> onReady) override {
    readable_.setSocket(descriptor);
    writable_.setSocket(descriptor);
    timeout_.setSingleShot(true);
    QObject::connect(&readable_, &QSocketNotifier::activated, &timeout_, onReady);
    QObject::connect(&writable_, &QSocketNotifier::activated, &timeout_, onReady);
    QObject::connect(&timeout_, &QTimer::timeout, &timeout_, onReady);
    readable_.setEnabled(true);
  }
  void waitFor(bool output, std::optional<std::chrono::milliseconds> time) override {
    writable_.setEnabled(output);
    time ? timeout_.start(*time) : timeout_.stop();
  }
  void stop() override {
    readable_.setEnabled(false);
    writable_.setEnabled(false);
    timeout_.stop();
  }

 private:
  QSocketNotifier readable_{QSocketNotifier::Read};
  QSocketNotifier writable_{QSocketNotifier::Write};
  QTimer timeout_;
};

}  // namespace

std::unique_ptr<Bus> openSystemBus(std::function<void()> onClosed) {
  return Bus::open(Bus::Kind::system, std::make_unique<QtBusWait>(), std::move(onClosed));
}

}  // namespace voxtrel
