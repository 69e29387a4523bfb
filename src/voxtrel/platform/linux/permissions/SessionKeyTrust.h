#pragma once

#include <functional>
#include <string>

#include "common/base/SessionKind.h"
#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/Permissions.h"

namespace voxtrel {

/// What decides whether the push-to-talk key can be seen.
struct SessionFacts {
  SessionKind session = SessionKind::x11;
  bool hasXInput2 = false;
  bool canReadKeyboard = false;
  bool offersShortcuts = false;  ///< the desktop's portal does
};

/// Under X11 every program may see keys by XInput 2. Wayland hides them: there, the kernel's
/// devices are left to those who may read them, or the portal.
bool isKeyVisible(const SessionFacts& facts);

/// The notification that says how to make the key visible.
UserNotification keyHiddenNotification(SessionKind session);

/// Trust is what the login session gives: can its push-to-talk key be seen?
/// The portal answers later than it is asked; until its first answer it counts as offering nothing.
/// Thread: the main thread.  Borrows: Notifications.
/// Fails by: no trust. A prompt is one notification in the process's life, posted once the answer
/// is no for sure.
class SessionKeyTrust final : public AccessibilityTrust {
 public:
  /// Where the facts come from.
  struct Sources {
    SessionKind session = SessionKind::x11;
    std::function<bool()> offersXInput2;
    std::function<bool()> canReadKeyboard;
    /// Answers once, and not before it returns; not any more once this is gone.
    std::function<void(std::function<void(bool isOffered)> answer)> askPortal;
  };

  SessionKeyTrust(Sources sources, Notifications& notifications);

  bool isTrusted(bool prompt) override;

  /// The session, the X server, the devices and the portal that this process has. Thread: as above.
  static Sources sourcesOfThisSession(const std::string& inputFolder = "/dev/input");

 private:
  enum class Prompt { none, due, posted };

  bool askX() const;
  bool askDevicesAndPortal();
  void portalAnswered(bool isOffered);
  void postDuePrompt();

  Notifications& notifications_;
  bool isPortalAsked_ = false;  ///< and has not answered yet
  bool portalOffers_ = false;   ///< its newest answer
  Prompt prompt_ = Prompt::none;
  Sources sources_;  ///< last, to take unanswered questions away first
};

}  // namespace voxtrel
