#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "common/posix/Confinement.h"
#include "quillback/dbus/LoopBus.h"

namespace voxtrel::quillback {

/// The desktop's portal, over a connection of its own. A portal answers a request later, by a signal; one
/// request runs at a time.
/// Thread: the loop's.  Owns: a connection to the session bus.  Borrows: Loop (must outlive this).
/// Fails by: null from `open`; later, `onGone`.
class Portal {
 public:
  struct Callbacks {
    /// The reason is for people. A request that runs is not answered any more.
    std::function<void(const std::string& why)> onGone;
    /// The portal runs, maybe for the first time.
    std::function<void()> onThere;
  };
  using WriteRequest = std::function<void(sd_bus_message& call, const std::string& token)>;
  using OnResponse = std::function<void(std::uint32_t code, sd_bus_message& results)>;

  /// The user said no.
  static constexpr std::uint32_t kCancelled = 1;
  /// The portal refused the call itself; there are no results.
  static constexpr std::uint32_t kRefused = 100;

  /// Null without a session bus.
  [[nodiscard]] static std::unique_ptr<Portal> open(Loop& loop, Callbacks callbacks);
  /// Asks only whether the portal has an interface. Null without a session bus.
  [[nodiscard]] static std::unique_ptr<Portal> ask(const char* interface, Loop& loop,
                                                   const std::function<void(bool)>& onAnswer);
  Portal(const Portal&) = delete;
  Portal& operator=(const Portal&) = delete;

  /// Says who we are, which newer portals want first of all. The portal may look at this process, which it
  /// does once: newer ones now, older ones at the first request.
  void introduce(const std::function<void()>& then);
  /// No version: it does not have the interface.
  void askVersion(const char* interface,
                  const std::function<void(std::optional<std::uint32_t>)>& onVersion);

  void call(const char* interface, const char* method, const Bus::Write& write,
            Bus::Handler onReply);
  /// Calls a method that is answered by a signal. `write` puts the token, which names the request, into the
  /// options.
  void request(const char* interface, const char* method, const WriteRequest& write,
               OnResponse onResponse);
  bool isAsking() const { return !token_.empty(); }
  /// The running request's answer is not wanted any more.
  void dropRequest() { token_.clear(); }

  void onSignal(const char* interface, const char* member, Bus::Handler handler);
  /// Ends a session of ours.
  void close(const std::string& session, const std::function<void()>& then);

 private:
  explicit Portal(Callbacks callbacks) : callbacks_(std::move(callbacks)) {}
  void subscribe();
  void onAnswer(sd_bus_message& signal);
  /// Calls `onChange` when a service comes or goes.
  using OnOwner = std::function<void(bool wasThere, bool isThere)>;
  void onOwner(const std::string& service, const OnOwner& onChange);
  void portalChanged(bool wasThere, bool isThere);
  void backendEnded();

  Callbacks callbacks_;
  std::string token_;  // of the request that runs
  OnResponse onResponse_;
  int requests_ = 0;
  std::optional<OpenToOthers> open_;  // until the portal has looked at us
  std::unique_ptr<Bus> bus_;
};

}  // namespace voxtrel::quillback
