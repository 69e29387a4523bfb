#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>

struct sd_bus;
struct sd_bus_message;

namespace voxtrel {

/// A connection to the system's message bus, driven by Qt's event loop. Nothing waits, not even for
/// the bus to greet: a bus that hangs must not hold up the application (Qt's own connection does).
/// Thread: the main thread.  Owns: the connection; callbacks end with it.
/// Fails by: `open` returning null; later, by `onClosed`.
class SystemBus {
 public:
  using Handler = std::function<void(sd_bus_message*)>;

  /// `onClosed` is called at most once, when the bus has ended the connection.
  static std::unique_ptr<SystemBus> open(std::function<void()> onClosed);
  ~SystemBus();
  SystemBus(const SystemBus&) = delete;
  SystemBus& operator=(const SystemBus&) = delete;

  /// Calls `handler` for every signal that the match rule `rule` lets through.
  void onSignal(const std::string& rule, Handler handler);

  /// A call that carries only strings; `onAnswer` gets the answer, an error answer included.
  struct Call {
    const char* service;
    const char* path;
    const char* interface;
    const char* method;
    std::vector<std::string> arguments;
  };
  void call(const Call& call, Handler onAnswer);

 private:
  struct Unref {
    void operator()(sd_bus* bus) const;
  };

  SystemBus(sd_bus* bus, std::function<void()> onClosed);
  void process();
  void watch();
  void fail();

  std::function<void()> onClosed_;
  std::vector<std::unique_ptr<Handler>> signalHandlers_;
  std::unique_ptr<sd_bus, Unref> bus_;
  QSocketNotifier readable_;
  QSocketNotifier writable_;
  QTimer timeout_;
};

}  // namespace voxtrel
