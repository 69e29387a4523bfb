#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <utility>

#include "common/base/SessionKind.h"
#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/Permissions.h"

namespace voxtrel {

/// What decides whether the push-to-talk key can be seen.
struct SessionFacts {
  SessionKind session = SessionKind::x11;
  bool hasXInput2 = false;
  bool canReadKeyboard = false;
  bool offersShortcuts = false;  ///< by the desktop's portal
};

/// Under X11, XInput 2 shows every program the keys. Wayland hides them: there, the user must be
/// allowed to read a keyboard device, or the portal must offer shortcuts.
bool isKeyVisible(const SessionFacts& facts);

/// The notification that says how to make the key visible.
UserNotification keyHiddenNotification(SessionKind session);

/// Asks the desktop's portal whether it offers global shortcuts.
/// Thread: the main thread; never blocks.  Owns: its calls, which end with it.
/// Fails by: "no", also after five seconds without a reply.
class ShortcutsPortal {
 public:
  explicit ShortcutsPortal(QDBusConnection bus) : bus_(std::move(bus)) {}

  /// `onReply` is called once, never before this returns.
  void ask(std::function<void(bool isOffered)> onReply);

 private:
  QDBusConnection bus_;
  QObject calls_;  ///< their owner
};

/// Trusted if this login session lets programs see the push-to-talk key. Until the portal first
/// replies, it counts as offering nothing.
/// Thread: the main thread.  Borrows: Notifications.
/// Fails by: no trust. A prompt is one notification per process, posted once "no" is certain.
class SessionKeyTrust final : public AccessibilityTrust {
 public:
  /// Where the facts come from.
  struct Sources {
    SessionKind session = SessionKind::x11;
    std::function<bool()> offersXInput2;
    std::function<bool()> canReadKeyboard;
    /// Replies once, later, unless this is gone by then.
    std::function<void(std::function<void(bool isOffered)> onReply)> askPortal;
  };

  SessionKeyTrust(Sources sources, Notifications& notifications);

  bool isTrusted(bool prompt) override;

  /// The real session, X server, devices and portal.
  static Sources sourcesOfThisSession();

 private:
  enum class Prompt { none, due, posted };

  bool askX() const;
  bool askDevicesAndPortal();
  void onPortalReply(bool isOffered);
  void postDuePrompt();

  Notifications& notifications_;
  bool isPortalAsked_ = false;  ///< and has not replied yet
  bool portalOffers_ = false;   ///< its newest reply
  Prompt prompt_ = Prompt::none;
  Sources sources_;  ///< last, so that calls without a reply end first
};

}  // namespace voxtrel
