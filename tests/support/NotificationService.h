#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "quillback/ports/Loop.h"
#include "support/VirtualDisplay.h"

namespace voxtrel::quillback::test {

/// A session bus for one test, to which it sets $DBUS_SESSION_BUS_ADDRESS.
/// Thread: one.  Owns: the bus, which ends with it.
class SessionBus {
 public:
  SessionBus() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    daemon_ = std::make_unique<RunningProgram>(
        std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                 "--print-address=" + std::to_string(ends[1])},
        ends[1]);
    close(ends[1]);
    std::string address;
    char c = 0;
    while (read(ends[0], &c, 1) == 1 && c != '\n') address += c;
    close(ends[0]);
    if (address.empty()) throw std::runtime_error("dbus-daemon did not start");
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  }

 private:
  std::unique_ptr<RunningProgram> daemon_;
};

/// Stands in for the desktop's notification service on the session bus. Ids count from 1.
/// Thread: the loop's.  Owns: a connection to the bus.
class NotificationService {
 public:
  struct Notification {
    std::uint32_t replaced;
    std::string title;
    std::string body;
  };

  explicit NotificationService(Loop& loop) {
    if (sd_bus_open_user(&bus_) < 0) throw std::runtime_error("no session bus");
    sd_bus_add_object(bus_, nullptr, "/org/freedesktop/Notifications", answer, this);
    if (sd_bus_request_name(bus_, "org.freedesktop.Notifications", 0) < 0) {
      throw std::runtime_error("no name on the bus");
    }
    watch_ = loop.watch(sd_bus_get_fd(bus_), [this] {
      while (sd_bus_process(bus_, nullptr) > 0) {
      }
    });
  }
  NotificationService(const NotificationService&) = delete;
  NotificationService& operator=(const NotificationService&) = delete;
  ~NotificationService() {
    watch_.reset();
    sd_bus_flush_close_unref(bus_);
  }

  std::vector<Notification> shown;
  std::vector<std::uint32_t> closed;
  bool refuses = false;

 private:
  static int answer(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    auto* const service = static_cast<NotificationService*>(self);
    const bool closes = sd_bus_message_is_method_call(call, nullptr, "CloseNotification") > 0;
    return closes ? service->close(call) : service->show(call);
  }
  int close(sd_bus_message* call) {
    std::uint32_t id = 0;
    if (sd_bus_message_read(call, "u", &id) > 0) closed.push_back(id);
    return sd_bus_reply_method_return(call, "");
  }
  int show(sd_bus_message* call) {
    const char* name = nullptr;
    const char* icon = nullptr;
    const char* title = nullptr;
    const char* body = nullptr;
    std::uint32_t replaced = 0;
    if (sd_bus_message_read(call, "susss", &name, &replaced, &icon, &title, &body) <= 0) return 0;
    shown.push_back({replaced, title, body});
    if (refuses) {
      return sd_bus_reply_method_errorf(call, "org.freedesktop.DBus.Error.Failed", "refused");
    }
    return sd_bus_reply_method_return(call, "u", static_cast<std::uint32_t>(shown.size()));
  }

  sd_bus* bus_ = nullptr;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback::test
