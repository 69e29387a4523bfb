#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "quillback/dbus/LoopBus.h"
#include "quillback/ports/Output.h"

namespace voxtrel::quillback {

/// Shows notifications by the desktop's notification service. Each one replaces the one before. Texts go
/// over the message bus only: a command line could be read by every user of the machine.
/// Thread: the loop's.  Owns: a connection to the session bus, from the first notification on.
/// Borrows: Loop, Output (must outlive this).
/// Fails by: one line of output, the first time.
class Notifier {
 public:
  static constexpr std::chrono::seconds kOnScreen{
      4};  ///< desktops show one for four or five seconds

  /// `onScreen`: how long a notification is taken to be seen; after that, it is closed and a new one shown.
  Notifier(Loop& loop, Output& output, std::chrono::milliseconds onScreen = kOnScreen)
      : loop_(loop), output_(output), onScreen_(onScreen) {}

  /// Returns at once. The body is shown as it is, a long one in part. While the service has not answered,
  /// only the newest one waits.
  void notify(const std::string& title, const std::string& body);

 private:
  struct Notification {
    std::string title;
    std::string body;
  };

  void sendNext();
  void closeOld();
  void onReply(sd_bus_message& reply);
  void reportFailure();

  Loop& loop_;
  Output& output_;
  const std::chrono::milliseconds onScreen_;
  std::unique_ptr<Bus> bus_;
  std::optional<Notification> next_;
  bool isSending_ = false;
  bool hasReported_ = false;
  std::uint32_t shownId_ = 0;  ///< of the one before; 0: none
  Loop::TimePoint shownAt_{};
};

}  // namespace voxtrel::quillback
