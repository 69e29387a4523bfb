#pragma once

#include <functional>
#include <string>

#include "common/base/SessionKind.h"
#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/Permissions.h"
#include "voxtrel/platform/linux/permissions/EngineCheck.h"

namespace voxtrel {

/// Trusted if the push-to-talk key can be seen. Under X11 every program sees the keys if the server
/// has XInput 2. Wayland hides them; what the engine can do about that, it knows best.
/// Thread: the main thread.  Borrows: Notifications.
/// Fails by: no trust until the engine's first reply. A prompt is one notification per process, posted
/// once "no" is certain.
class SessionKeyTrust final : public AccessibilityTrust {
 public:
  /// Where the answers come from.
  struct Sources {
    SessionKind session = SessionKind::x11;
    std::string desktops;  ///< separated by colons, as in XDG_CURRENT_DESKTOP
    std::function<bool()> offersXInput2;
    /// Replies once, at once or later, unless this is gone by then.
    std::function<void(std::function<void(const KeyAnswer&)> onReply)> askEngine;
  };

  SessionKeyTrust(Sources sources, Notifications& notifications);

  bool isTrusted(bool prompt) override;

  /// The real session and X server, and the engine at `engine`.
  static Sources sourcesOfThisSession(std::function<std::string()> engine);

 private:
  enum class Prompt { none, due, posted };

  bool askX();
  bool askEngine();
  void onEngineReply(const KeyAnswer& answer);
  void settlePrompt(const KeyAnswer& answer);

  Notifications& notifications_;
  bool isEngineAsked_ = false;  ///< and has not replied yet
  bool isSeen_ = false;         ///< its newest reply
  bool isNews_ = false;         ///< a late "yes", not returned yet: the next call need not ask
  Prompt prompt_ = Prompt::none;
  Sources sources_;  ///< last, so that questions without a reply end first
};

}  // namespace voxtrel
