#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace voxtrel {

/// Waits for a connection on the program's event loop.
/// Thread: the loop's.
class BusWait {
 public:
  virtual ~BusWait() = default;
  /// From now on calls `onReady` whenever the descriptor is readable, and as `waitFor` says.
  virtual void start(int descriptor, std::function<void()> onReady) = 0;
  /// In place of the last call: `onReady` also when the descriptor takes output, and after a time.
  virtual void waitFor(bool output, std::optional<std::chrono::milliseconds> time) = 0;
  /// `onReady` is not called any more.
  virtual void stop() = 0;
};

/// A connection to a message bus. It never blocks, not even for the bus's greeting.
/// Thread: the loop's.  Owns: the connection, the wait; no callback runs after its end.
/// Fails by: null from `open`; later, `onClosed`.
class Bus {
 public:
  enum class Kind { session, system };
  using Handler = std::function<void(sd_bus_message& message)>;
  /// Adds the arguments to a call.
  using Write = std::function<void(sd_bus_message& call)>;
  struct Method {
    const char* service;
    const char* path;
    const char* interface;
    const char* name;
  };

  /// `onClosed` is called at most once, when the connection has ended; it may destroy this.
  [[nodiscard]] static std::unique_ptr<Bus> open(Kind kind, std::unique_ptr<BusWait> wait,
                                                 std::function<void()> onClosed);
  ~Bus();
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  /// `onReply` gets the reply, which may be an error.
  void call(const Method& method, const Write& write, Handler onReply);
  /// How others call this connection; empty before the bus has answered anything.
  std::string name() const;
  /// Calls `handler` for every signal or other message that matches `rule`.
  void onSignal(const std::string& rule, Handler handler);

 private:
  struct Close {
    void operator()(sd_bus* bus) const;
  };

  Bus(sd_bus* bus, std::unique_ptr<BusWait> wait, std::function<void()> onClosed);
  void process();
  void waitForMore();
  void end();

  std::function<void()> onClosed_;  ///< null once called
  std::vector<std::unique_ptr<Handler>> signalHandlers_;
  std::unique_ptr<sd_bus, Close> bus_;
  bool isBroken_ = false;
  std::unique_ptr<BusWait> wait_;
};

/// Whether a reply is an error.
bool isError(sd_bus_message& reply);

}  // namespace voxtrel
