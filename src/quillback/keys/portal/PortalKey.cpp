#include "quillback/keys/portal/PortalKey.h"

#include <systemd/sd-bus.h>

#include <array>
#include <utility>

#include "quillback/keys/portal/PortalMessages.h"

namespace voxtrel::quillback {
namespace {

constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kShortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* kApplication = "org.voxtrel.Voxtrel";
/// The same in each session: Plasma names the user's setting after it.
constexpr const char* kSessionToken = "quillback";

Bus::Method shortcutsMethod(const char* name) {
  return {kService, kPath, kShortcuts, name};
}

void askForVersion(Bus& bus, Bus::Handler onReply) {
  bus.call(
      {kService, kPath, "org.freedesktop.DBus.Properties", "Get"},
      [](sd_bus_message& call) { sd_bus_message_append(&call, "ss", kShortcuts, "version"); },
      std::move(onReply));
}

std::string signalRule(const char* interface, const char* member) {
  return std::string("type='signal',sender='") + kService + "',interface='" + interface +
         "',member='" + member + "'";
}

}  // namespace

std::string_view PortalKey::preferredTrigger(const Hotkey& hotkey) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kTriggers = {
      {{"f5", "F5"}, {"f6", "F6"}, {"f7", "F7"}, {"f8", "F8"}, {"shift+\\", "SHIFT+backslash"}}};
  for (const auto& [name, trigger] : kTriggers) {
    if (name == hotkey.name) return trigger;
  }
  return "F8";  // a modifier alone never fires
}

std::unique_ptr<Bus> PortalKey::askForShortcuts(Loop& loop,
                                                const std::function<void(bool)>& onAnswer) {
  auto bus = openBus(Bus::Kind::session, loop, [onAnswer] { onAnswer(false); });
  if (bus) {
    askForVersion(*bus, [onAnswer](sd_bus_message& reply) { onAnswer(!isError(reply)); });
  }
  return bus;
}

std::unique_ptr<PortalKey> PortalKey::open(const Hotkey& hotkey, Callbacks callbacks, Loop& loop) {
  std::unique_ptr<PortalKey> key(new PortalKey(hotkey, std::move(callbacks)));
  key->bus_ = openBus(Bus::Kind::session, loop,
                      [self = key.get()] { self->hide("the session bus is gone"); });
  if (!key->bus_) return nullptr;
  key->subscribe();
  key->begin();
  return key;
}

PortalKey::PortalKey(const Hotkey& hotkey, Callbacks callbacks)
    : callbacks_(std::move(callbacks)), trigger_(preferredTrigger(hotkey)) {}

void PortalKey::subscribe() {
  const auto on = [this](const char* interface, const char* member, Bus::Handler handler) {
    bus_->onSignal(signalRule(interface, member), std::move(handler));
  };
  on("org.freedesktop.portal.Request", "Response", [this](auto& signal) { onResponse(signal); });
  on("org.freedesktop.portal.Session", "Closed", [this](sd_bus_message& signal) {
    if (sd_bus_message_get_path(&signal) == session_) hide("the desktop ended the shortcut");
  });
  on(kShortcuts, "Activated", [this](auto& signal) { onKey(signal, true); });
  on(kShortcuts, "Deactivated", [this](auto& signal) { onKey(signal, false); });
  on(kShortcuts, "ShortcutsChanged", [this](auto& signal) { onChanged(signal); });
  bus_->onSignal(std::string("type='signal',sender='org.freedesktop.DBus',"
                             "member='NameOwnerChanged',arg0='") +
                     kService + "'",
                 [this](auto& signal) { onOwner(signal); });
}

/// Programs outside a sandbox say who they are, first of all, where the portal asks for it. An older
/// portal refuses the call. The portal looks at its caller once, so nobody else may do so later.
void PortalKey::begin() {
  open_.emplace();
  bus_->call(
      {kService, kPath, "org.freedesktop.host.portal.Registry", "Register"},
      [](sd_bus_message& call) { sd_bus_message_append(&call, "sa{sv}", kApplication, 0); },
      [this](sd_bus_message& /*reply*/) { askVersion(); });
}

void PortalKey::askVersion() {
  askForVersion(*bus_, [this](sd_bus_message& reply) {
    open_.reset();
    isError(reply) ? hide("the desktop's portal has no global shortcuts") : createSession();
  });
}

void PortalKey::request(const char* name, const Bus::Write& write,
                        void (PortalKey::*then)(std::uint32_t, sd_bus_message&)) {
  token_ = "quillback" + std::to_string(++requests_);
  then_ = then;
  bus_->call(shortcutsMethod(name), write, [this, token = token_](sd_bus_message& reply) {
    if (!isError(reply) || token != token_) return;
    token_.clear();
    hide("the desktop's portal refused the shortcut");
  });
}

/// Plasma 5.27 wants the shortcuts here already; others ignore them here.
void PortalKey::createSession() {
  request(
      "CreateSession",
      [this](sd_bus_message& call) {
        sd_bus_message_open_container(&call, 'a', "{sv}");
        appendEntry(call, "handle_token", token_);
        appendEntry(call, "session_handle_token", kSessionToken);
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
  bind();
}

void PortalKey::bind() {
  request(
      "BindShortcuts",
      [this](sd_bus_message& call) {
        sd_bus_message_append(&call, "o", session_.c_str());
        appendShortcuts(call, trigger_);
        sd_bus_message_append(&call, "sa{sv}", "", 1, "handle_token", "s", token_.c_str());
      },
      &PortalKey::onBound);
}

/// GNOME 48.0 answers 2 although it has bound, so the shortcuts count and not the code.
void PortalKey::onBound(std::uint32_t code, sd_bus_message& results) {
  constexpr std::uint32_t kCancelled = 1;
  if (const auto trigger = triggerEntry(results)) return accept(*trigger);
  if (code == kCancelled) return hide("the shortcut was refused");
  listShortcuts();
}

void PortalKey::listShortcuts() {
  request(
      "ListShortcuts",
      [this](sd_bus_message& call) {
        sd_bus_message_append(&call, "oa{sv}", session_.c_str(), 1, "handle_token", "s",
                              token_.c_str());
      },
      &PortalKey::onListed);
}

void PortalKey::onListed(std::uint32_t /*code*/, sd_bus_message& results) {
  if (const auto trigger = triggerEntry(results)) return accept(*trigger);
  hide("the desktop did not bind the shortcut");
}

void PortalKey::accept(const std::string& trigger) {
  if (trigger.empty() && trigger_ != kSecondTrigger) {
    trigger_ = kSecondTrigger;
    bus_->call(
        {kService, session_.c_str(), "org.freedesktop.portal.Session", "Close"},
        [](sd_bus_message& /*call*/) {},
        [this](sd_bus_message& /*reply*/) {
          if (session_.empty()) createSession();
        });
    session_.clear();
    return;
  }
  if (std::exchange(boundTrigger_, trigger) != trigger) callbacks_.onSeen(trigger);
}

void PortalKey::onResponse(sd_bus_message& signal) {
  const std::string_view path = sd_bus_message_get_path(&signal);
  if (token_.empty() || !path.ends_with("/" + token_)) return;
  std::uint32_t code = 0;
  if (sd_bus_message_read(&signal, "u", &code) <= 0) return;
  token_.clear();
  (this->*then_)(code, signal);
}

void PortalKey::onOwner(sd_bus_message& signal) {
  const char* name = nullptr;
  const char* before = nullptr;
  const char* after = nullptr;
  if (sd_bus_message_read(&signal, "sss", &name, &before, &after) <= 0) return;
  // A portal that was started for our first call has had no owner before.
  if (*before != '\0') hide("the desktop's portal is gone");
  if (*after != '\0' && session_.empty() && token_.empty() && isHidden_) {
    isHidden_ = false;
    begin();
  }
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
  open_.reset();
  hold(false);
  session_.clear();
  token_.clear();
  boundTrigger_.reset();
  if (!std::exchange(isHidden_, true)) callbacks_.onHidden(why);
}

}  // namespace voxtrel::quillback
