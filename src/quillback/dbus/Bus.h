#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillback/ports/Loop.h"

struct sd_bus;
struct sd_bus_message;

namespace voxtrel::quillback {

/// A connection to a message bus on the loop. It never waits, not even for the bus's greeting.
/// Thread: the loop's.  Owns: the connection; no callback runs after its end.  Borrows: Loop (must
/// outlive this).
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
  [[nodiscard]] static std::unique_ptr<Bus> open(Kind kind, Loop& loop,
                                                 std::function<void()> onClosed);
  ~Bus();
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  /// `onReply` gets the reply, which may be an error.
  void call(const Method& method, const Write& write, Handler onReply);
  /// Calls `handler` for every signal that matches `rule`.
  void onSignal(const std::string& rule, Handler handler);

 private:
  struct Close {
    void operator()(sd_bus* bus) const;
  };

  Bus(sd_bus* bus, Loop& loop, std::function<void()> onClosed);
  void process();
  void waitForMore();
  void end();

  Loop& loop_;
  std::function<void()> onClosed_;  ///< null once called
  std::vector<std::unique_ptr<Handler>> signalHandlers_;
  std::unique_ptr<sd_bus, Close> bus_;
  std::unique_ptr<Loop::Watch> watch_;
  std::unique_ptr<Loop::Timer> timer_;
};

/// Whether a reply is an error.
bool isError(sd_bus_message& reply);

}  // namespace voxtrel::quillback
