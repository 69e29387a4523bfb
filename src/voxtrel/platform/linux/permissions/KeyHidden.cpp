#include "voxtrel/platform/linux/permissions/KeyHidden.h"

namespace voxtrel {
namespace {

constexpr const char* kNoXInput =
    "This X server has no XInput 2, which tells programs of keys. Log in to a session on a "
    "current X.Org server, then start Voxtrel there.";
constexpr const char* kGroup =
    "run \"sudo usermod -aG input $USER\" in a terminal and log in again.";

/// What else than the group of the keyboards helps on this desktop. Notifications are cut after one to five
/// lines, so the way that most people can go comes first.
std::string betterWay(DesktopFamily desktop) {
  switch (desktop) {
    case DesktopFamily::gnome:
      return "Give \"quillback key toggle\" a shortcut in Settings > Keyboard and press it once. "
             "Or log in to \"GNOME on Xorg\" (X11), or ";
    case DesktopFamily::kde:
      return "Install xdg-desktop-portal-kde and log in again. Or log in to \"Plasma (X11)\", or ";
    case DesktopFamily::other:
      break;
  }
  return "Have a key run \"quillback key press\" and \"quillback key release\" by your "
         "compositor's settings, and press it once. Or log in to an X11 session, or ";
}

/// The engine's reason as a sentence, with a space before it.
std::string sentence(std::string reason) {
  if (reason.empty()) return reason;
  if (reason[0] >= 'a' && reason[0] <= 'z') reason[0] = static_cast<char>(reason[0] - 'a' + 'A');
  return " " + reason + ".";
}

}  // namespace

UserNotification keyHiddenNotification(SessionKind session, DesktopFamily desktop,
                                       const std::string& reason) {
  const std::string advice = betterWay(desktop) + kGroup + sentence(reason);
  return {.identifier = "org.voxtrel.Voxtrel.keyHidden",
          .title = "Voxtrel cannot see the push-to-talk key",
          .body = session == SessionKind::x11 ? kNoXInput : advice,
          .categoryIdentifier = {}};
}

}  // namespace voxtrel
