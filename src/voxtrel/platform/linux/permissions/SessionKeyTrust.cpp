#include "voxtrel/platform/linux/permissions/SessionKeyTrust.h"

#include <QDBusVariant>
#include <memory>
#include <utility>

#include "voxtrel/platform/linux/dbus/AsyncCall.h"
#include "voxtrel/platform/linux/permissions/KeyboardNodes.h"
#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {

bool isKeyVisible(const SessionFacts& facts) {
  if (facts.session == SessionKind::x11) return facts.hasXInput2;
  return facts.canReadKeyboard || facts.offersShortcuts;
}

UserNotification keyHiddenNotification(SessionKind session) {
  UserNotification notification{.identifier = "org.voxtrel.Voxtrel.keyHidden",
                                .title = "Voxtrel cannot see the push-to-talk key",
                                .body = {},
                                .categoryIdentifier = {}};
  if (session == SessionKind::x11) {
    notification.body =
        "This X server has no XInput 2, which tells programs of keys. Log in to a session on a "
        "current X.Org server, then start Voxtrel there.";
  } else {
    notification.body =
        "Wayland hides the keyboard from programs. Log in to an X11 session, or run "
        "\"sudo usermod -aG input $USER\" in a terminal and log in again.";
  }
  return notification;
}

void ShortcutsPortal::ask(std::function<void(bool isOffered)> onReply) {
  QDBusMessage getVersion = QDBusMessage::createMethodCall(
      "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
      "org.freedesktop.DBus.Properties", "Get");
  getVersion << QString("org.freedesktop.portal.GlobalShortcuts") << QString("version");
  callAsync<QDBusVariant>(
      bus_, getVersion, calls_,
      [onReply = std::move(onReply)](const QDBusPendingReply<QDBusVariant>& reply) {
        onReply(reply.isValid() && reply.value().variant().toUInt() > 0);
      });
}

SessionKeyTrust::Sources SessionKeyTrust::sourcesOfThisSession() {
  auto portal = std::make_shared<ShortcutsPortal>(QDBusConnection::sessionBus());
  return {.session = currentSessionKind(SessionKind::wayland),
          .offersXInput2 = [] { return voxtrel::offersXInput2(); },
          .canReadKeyboard = [] { return voxtrel::canReadKeyboard(); },
          .askPortal = [portal](auto onReply) { portal->ask(std::move(onReply)); }};
}

SessionKeyTrust::SessionKeyTrust(Sources sources, Notifications& notifications)
    : notifications_(notifications), sources_(std::move(sources)) {}

bool SessionKeyTrust::isTrusted(bool prompt) {
  if (prompt && prompt_ == Prompt::none) prompt_ = Prompt::due;
  const bool trusted = sources_.session == SessionKind::x11 ? askX() : askDevicesAndPortal();
  if (trusted && prompt_ == Prompt::due) prompt_ = Prompt::none;
  // If the portal has been asked, its reply decides.
  if (!isPortalAsked_) postDuePrompt();
  return trusted;
}

bool SessionKeyTrust::askX() const {
  return isKeyVisible({.session = SessionKind::x11, .hasXInput2 = sources_.offersXInput2()});
}

bool SessionKeyTrust::askDevicesAndPortal() {
  const bool canRead = sources_.canReadKeyboard();
  if (!canRead && !isPortalAsked_) {
    isPortalAsked_ = true;
    sources_.askPortal([this](bool isOffered) { onPortalReply(isOffered); });
  }
  return isKeyVisible({.session = SessionKind::wayland,
                       .canReadKeyboard = canRead,
                       .offersShortcuts = portalOffers_});
}

void SessionKeyTrust::onPortalReply(bool isOffered) {
  isPortalAsked_ = false;
  portalOffers_ = isOffered;
  if (isOffered && prompt_ == Prompt::due) prompt_ = Prompt::none;
  postDuePrompt();
}

void SessionKeyTrust::postDuePrompt() {
  if (prompt_ != Prompt::due) return;
  prompt_ = Prompt::posted;
  notifications_.post(keyHiddenNotification(sources_.session));
}

}  // namespace voxtrel
