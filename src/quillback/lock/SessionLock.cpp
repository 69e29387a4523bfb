#include "quillback/lock/SessionLock.h"

#include <systemd/sd-bus.h>

#include <cstdlib>

namespace voxtrel::quillback {
namespace {

constexpr const char* kService = "org.freedesktop.login1";
constexpr const char* kSessionInterface = "org.freedesktop.login1.Session";
constexpr const char* kChangeRule =
    "type='signal',sender='org.freedesktop.login1',interface='org.freedesktop.DBus.Properties',"
    "member='PropertiesChanged',arg0='org.freedesktop.login1.Session'";

/// The session that started us; a service of the user's belongs to none, and means the one on the screen.
std::string sessionId() {
  const char* const id = std::getenv("XDG_SESSION_ID");
  return id != nullptr && *id != '\0' ? id : "auto";
}

}  // namespace

LoginLock::LoginLock(Loop& loop)
    : bus_(openBus(Bus::Kind::system, loop, [this] { isLocked_ = false; })) {
  if (!bus_) return;
  bus_->onSignal(kChangeRule, [this](sd_bus_message& signal) {
    const char* const path = sd_bus_message_get_path(&signal);
    if (path != nullptr && path == session_) read(session_);
  });
  findSession();
}

void LoginLock::findSession() {
  constexpr Bus::Method kGetSession{kService, "/org/freedesktop/login1",
                                    "org.freedesktop.login1.Manager", "GetSession"};
  bus_->call(
      kGetSession,
      [](sd_bus_message& call) { sd_bus_message_append(&call, "s", sessionId().c_str()); },
      [this](sd_bus_message& reply) {
        const char* path = nullptr;
        if (isError(reply) || sd_bus_message_read(&reply, "o", &path) <= 0) return;
        session_ = path;
        read(session_);
      });
}

void LoginLock::read(const std::string& session) {
  const Bus::Method get{kService, session.c_str(), "org.freedesktop.DBus.Properties", "Get"};
  bus_->call(
      get,
      [](sd_bus_message& call) {
        sd_bus_message_append(&call, "ss", kSessionInterface, "LockedHint");
      },
      [this](sd_bus_message& reply) {
        int isLocked = 0;
        if (isError(reply) || sd_bus_message_read(&reply, "v", "b", &isLocked) <= 0) return;
        isLocked_ = isLocked != 0;
      });
}

}  // namespace voxtrel::quillback
