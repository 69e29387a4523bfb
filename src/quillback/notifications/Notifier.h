#pragma once

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
  Notifier(Loop& loop, Output& output) : loop_(loop), output_(output) {}

  /// Returns at once. The body is shown as it is, a long one in part. While the service has not answered,
  /// only the newest one waits.
  void notify(const std::string& title, const std::string& body);

 private:
  struct Notification {
    std::string title;
    std::string body;
  };

  void sendNext();
  void onReply(sd_bus_message& reply);
  void reportFailure();

  Loop& loop_;
  Output& output_;
  std::unique_ptr<Bus> bus_;
  std::optional<Notification> next_;
  bool isSending_ = false;
  bool hasReported_ = false;
  std::uint32_t shownId_ = 0;  ///< of the one before; 0: none
};

}  // namespace voxtrel::quillback
