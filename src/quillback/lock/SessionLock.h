#pragma once

#include <memory>
#include <optional>
#include <string>

#include "common/base/SessionKind.h"
#include "quillback/dbus/LoopBus.h"
#include "quillback/lock/KeyboardGrab.h"
#include "quillback/ports/ScreenLock.h"

namespace voxtrel::quillback {

/// The lock state that the login manager keeps for the session, its LockedHint.
/// Thread: the loop's.  Owns: a connection to the system bus.
/// Fails by: never being locked.
class LoginLock final : public ScreenLock {
 public:
  explicit LoginLock(Loop& loop);

  bool isLocked() override { return isLocked_; }

 private:
  void findSession();
  void read(const std::string& session);

  std::unique_ptr<Bus> bus_;
  std::string session_;  ///< its object path; empty until it is known
  bool isLocked_ = false;
};

/// The screen counts as locked if the login manager says so or, under X11, if a program has the keyboard
/// for itself, such as a lock screen or a password prompt, but not a menu. Nothing can be typed into another
/// window then.
/// Thread: the loop's.  Owns: a connection to the system bus, one to the X server.
/// Borrows: Loop (must outlive this).
class SessionLock final : public ScreenLock {
 public:
  SessionLock(Loop& loop, SessionKind session) : login_(loop) {
    if (session == SessionKind::x11) keyboard_.emplace();
  }

  bool isLocked() override { return login_.isLocked() || (keyboard_ && keyboard_->isLocked()); }

 private:
  LoginLock login_;
  std::optional<KeyboardGrab> keyboard_;
};

}  // namespace voxtrel::quillback
