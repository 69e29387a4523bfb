#include "quillback/keys/portal/PortalKey.h"

#include <systemd/sd-bus.h>

#include <array>
#include <utility>

#include "quillback/dbus/BusEntries.h"
#include "quillback/keys/portal/PortalMessages.h"

namespace voxtrel::quillback {
namespace {

/// The same in each session: Plasma names the user's setting after it.
constexpr const char* kSessionToken = "quillback";

}  // namespace

std::string_view PortalKey::preferredTrigger(const Hotkey& hotkey) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kTriggers = {
      {{"f5", "F5"}, {"f6", "F6"}, {"f7", "F7"}, {"f8", "F8"}, {"shift+\\", "SHIFT+backslash"}}};
  for (const auto& [name, trigger] : kTriggers) {
    if (name == hotkey.name) return trigger;
  }
  return "F8";  // a modifier alone never fires
}

std::unique_ptr<PortalKey> PortalKey::open(const Hotkey& hotkey, Callbacks callbacks, Loop& loop) {
  std::unique_ptr<PortalKey> key(new PortalKey(hotkey, std::move(callbacks)));
  auto* const self = key.get();
  key->portal_ = Portal::open(
      loop, {[self](const std::string& why) { self->hide(why); }, [self] { self->comeBack(); }});
  if (!key->portal_) return nullptr;
  key->subscribe();
  key->begin();
  return key;
}

PortalKey::PortalKey(const Hotkey& hotkey, Callbacks callbacks)
    : callbacks_(std::move(callbacks)), trigger_(preferredTrigger(hotkey)) {}

void PortalKey::subscribe() {
  const auto on = [this](const char* member, Bus::Handler handler) {
    portal_->onSignal(kInterface, member, std::move(handler));
  };
  portal_->onSignal("org.freedesktop.portal.Session", "Closed", [this](sd_bus_message& signal) {
    if (sd_bus_message_get_path(&signal) == session_) hide("the desktop ended the shortcut");
  });
  on("Activated", [this](auto& signal) { onKey(signal, true); });
  on("Deactivated", [this](auto& signal) { onKey(signal, false); });
  on("ShortcutsChanged", [this](auto& signal) { onChanged(signal); });
}

void PortalKey::begin() {
  portal_->introduce([this] {
    portal_->askVersion(kInterface, [this](auto version) {
      version ? createSession() : hide("the desktop's portal has no global shortcuts");
    });
  });
}

void PortalKey::comeBack() {
  if (session_.empty() && !portal_->isAsking() && std::exchange(isHidden_, false)) begin();
}

void PortalKey::request(const char* name, const Portal::WriteRequest& write,
                        void (PortalKey::*then)(std::uint32_t, sd_bus_message&)) {
  portal_->request(kInterface, name, write,
                   [this, then](std::uint32_t code, sd_bus_message& results) {
                     if (code != Portal::kRefused) return (this->*then)(code, results);
                     hide("the desktop's portal refused the shortcut");
                   });
}

/// Plasma 5.27 wants the shortcuts here already; others ignore them here.
void PortalKey::createSession() {
  request(
      "CreateSession",
      [this](sd_bus_message& call, const std::string& token) {
        sd_bus_message_open_container(&call, 'a', "{sv}");
        appendText(call, "handle_token", token);
        appendText(call, "session_handle_token", kSessionToken);
        sd_bus_message_open_container(&call, 'e', "sv");
        sd_bus_message_append(&call, "s", "shortcuts");
        sd_bus_message_open_container(&call, 'v', "a(sa{sv})");
        appendShortcuts(call, trigger_);
        sd_bus_message_close_container(&call);
        sd_bus_message_close_container(&call);
        sd_bus_message_close_container(&call);
      },
      &PortalKey::onCreated);
}

void PortalKey::onCreated(std::uint32_t code, sd_bus_message& results) {
  const auto session = textEntry(results, "session_handle");
  if (code != 0 || !session) return hide("the desktop's portal gave no session");
  session_ = *session;
  askForBound();
}

void PortalKey::writeSession(sd_bus_message& call, const std::string& token) const {
  sd_bus_message_append(&call, "oa{sv}", session_.c_str(), 1, "handle_token", "s", token.c_str());
}

/// What was bound at an earlier start counts. Plasma 6 opens its settings each time that something is bound.
void PortalKey::askForBound() {
  portal_->request(
      kInterface, "ListShortcuts",
      [this](auto& call, const std::string& token) { writeSession(call, token); },
      [this](std::uint32_t code, sd_bus_message& results) {
        const auto trigger = code == 0 ? triggerEntry(results) : std::nullopt;
        trigger.value_or("").empty() ? bind() : accept(*trigger);
      });
}

void PortalKey::bind() {
  request(
      "BindShortcuts",
      [this](sd_bus_message& call, const std::string& token) {
        sd_bus_message_append(&call, "o", session_.c_str());
        appendShortcuts(call, trigger_);
        sd_bus_message_append(&call, "sa{sv}", "", 1, "handle_token", "s", token.c_str());
      },
      &PortalKey::onBound);
}

/// GNOME 48.0 answers 2 although it has bound, so the shortcuts count and not the code.
void PortalKey::onBound(std::uint32_t code, sd_bus_message& results) {
  if (const auto trigger = triggerEntry(results)) return accept(*trigger);
  if (code == Portal::kCancelled) return hide("the shortcut was refused");
  listShortcuts();
}

void PortalKey::listShortcuts() {
  request(
      "ListShortcuts", [this](auto& call, const std::string& token) { writeSession(call, token); },
      &PortalKey::onListed);
}

void PortalKey::onListed(std::uint32_t /*code*/, sd_bus_message& results) {
  if (const auto trigger = triggerEntry(results)) return accept(*trigger);
  hide("the desktop did not bind the shortcut");
}

void PortalKey::accept(const std::string& trigger) {
  if (trigger.empty() && trigger_ != kSecondTrigger) {
    trigger_ = kSecondTrigger;
    portal_->close(session_, [this] {
      if (session_.empty()) createSession();
    });
    session_.clear();
    return;
  }
  if (std::exchange(boundTrigger_, trigger) != trigger) callbacks_.onSeen(trigger);
}

bool PortalKey::isOfOurSession(sd_bus_message& signal) const {
  const char* session = nullptr;
  return sd_bus_message_read(&signal, "o", &session) > 0 && session_ == session;
}

void PortalKey::onKey(sd_bus_message& signal, bool isDown) {
  const char* id = nullptr;
  if (!isOfOurSession(signal) || sd_bus_message_read(&signal, "s", &id) <= 0) return;
  if (std::string_view(id) == kShortcutId) hold(isDown);
}

void PortalKey::onChanged(sd_bus_message& signal) {
  if (!isOfOurSession(signal)) return;
  const auto trigger = readTrigger(signal);
  if (trigger && boundTrigger_ && !trigger->empty()) accept(*trigger);
}

void PortalKey::hold(bool isDown) {
  if (std::exchange(isHeld_, isDown) == isDown) return;
  isDown ? callbacks_.key.onPressed() : callbacks_.key.onReleased();
}

void PortalKey::hide(const std::string& why) {
  hold(false);
  session_.clear();
  portal_->dropRequest();
  boundTrigger_.reset();
  if (!std::exchange(isHidden_, true)) callbacks_.onHidden(why);
}

}  // namespace voxtrel::quillback
