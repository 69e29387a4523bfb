#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace voxtrel {

/// A connection to the system bus on Qt's event loop. It never blocks, not even for the bus's
/// greeting; Qt's own connection would, so a bus that hangs would stop the application.
/// Thread: the main thread.  Owns: the connection; no callback is called after its end.
/// Fails by: `open` returning null; later, by `onClosed`.
class SystemBus {
 public:
  using Handler = std::function<void(sd_bus_message*)>;

  /// `onClosed` is called at most once, when the bus closes the connection.
  static std::unique_ptr<SystemBus> open(std::function<void()> onClosed);
  ~SystemBus();
  SystemBus(const SystemBus&) = delete;
  SystemBus& operator=(const SystemBus&) = delete;

  /// Calls `handler` for every signal that matches `rule`.
  void onSignal(const std::string& rule, Handler handler);

  /// A call whose arguments are strings. `onReply` gets the reply, which may be an error.
  struct Call {
    const char* service;
    const char* path;
    const char* interface;
    const char* method;
    std::vector<std::string> arguments;
  };
  void call(const Call& call, Handler onReply);

 private:
  struct Unref {
    void operator()(sd_bus* bus) const;
  };

  SystemBus(sd_bus* bus, std::function<void()> onClosed);
  void process();
  void watch();
  void fail();

  std::function<void()> onClosed_;  ///< null once called
  std::vector<std::unique_ptr<Handler>> signalHandlers_;
  std::unique_ptr<sd_bus, Unref> bus_;
  QSocketNotifier readable_;
  QSocketNotifier writable_;
  QTimer timeout_;
};

}  // namespace voxtrel
