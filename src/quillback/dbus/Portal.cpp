#include "quillback/dbus/Portal.h"

#include <systemd/sd-bus.h>

#include <string_view>
#include <utility>

#include "common/base/SessionKind.h"

namespace voxtrel::quillback {
namespace {

constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kApplication = "org.voxtrel.Voxtrel";

/// The name of the desktop's own program behind the portal. Its end closes our sessions without a word.
std::string backend() {
  return std::string("org.freedesktop.impl.portal.desktop.") +
         (currentDesktopFamily() == DesktopFamily::kde ? "kde" : "gnome");
}

}  // namespace

std::unique_ptr<Portal> Portal::open(Loop& loop, Callbacks callbacks) {
  std::unique_ptr<Portal> portal(new Portal(std::move(callbacks)));
  portal->bus_ = openBus(Bus::Kind::session, loop, [self = portal.get()] {
    self->dropRequest();
    self->open_.reset();
    self->callbacks_.onGone("the session bus is gone");
  });
  if (!portal->bus_) return nullptr;
  portal->subscribe();
  return portal;
}

std::unique_ptr<Portal> Portal::ask(const char* interface, Loop& loop,
                                    const std::function<void(bool)>& onAnswer) {
  auto portal = open(loop, {[onAnswer](const std::string& /*why*/) { onAnswer(false); }, [] {}});
  if (portal) {
    portal->askVersion(interface, [onAnswer](auto version) { onAnswer(version.has_value()); });
  }
  return portal;
}

void Portal::subscribe() {
  onSignal("org.freedesktop.portal.Request", "Response",
           [this](auto& signal) { onAnswer(signal); });
  onOwner(kService, [this](bool wasThere, bool isThere) { portalChanged(wasThere, isThere); });
  onOwner(backend(), [this](bool wasThere, bool /*isThere*/) {
    if (wasThere) backendEnded();
  });
}

void Portal::onOwner(const std::string& service, const OnOwner& onChange) {
  bus_->onSignal("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                     service + "'",
                 [onChange](sd_bus_message& signal) {
                   const char* name = nullptr;
                   const char* before = nullptr;
                   const char* after = nullptr;
                   if (sd_bus_message_read(&signal, "sss", &name, &before, &after) <= 0) return;
                   onChange(*before != '\0', *after != '\0');
                 });
}

/// An older portal refuses the call.
void Portal::introduce(const std::function<void()>& then) {
  open_.emplace();
  bus_->call(
      {kService, kPath, "org.freedesktop.host.portal.Registry", "Register"},
      [](sd_bus_message& call) { sd_bus_message_append(&call, "sa{sv}", kApplication, 0); },
      [then](sd_bus_message& /*reply*/) { then(); });
}

void Portal::askVersion(const char* interface,
                        const std::function<void(std::optional<std::uint32_t>)>& onVersion) {
  bus_->call(
      {kService, kPath, "org.freedesktop.DBus.Properties", "Get"},
      [interface](sd_bus_message& call) {
        sd_bus_message_append(&call, "ss", interface, "version");
      },
      [this, onVersion](sd_bus_message& reply) {
        std::uint32_t version = 0;
        const bool isThere = !isError(reply);
        if (!isThere) open_.reset();
        if (isThere) sd_bus_message_read(&reply, "v", "u", &version);
        onVersion(isThere ? std::optional(version) : std::nullopt);
      });
}

void Portal::call(const char* interface, const char* method, const Bus::Write& write,
                  Bus::Handler onReply) {
  bus_->call({kService, kPath, interface, method}, write, std::move(onReply));
}

void Portal::request(const char* interface, const char* method, const WriteRequest& write,
                     OnResponse onResponse) {
  token_ = "quillback" + std::to_string(++requests_);
  onResponse_ = std::move(onResponse);
  call(
      interface, method, [&](sd_bus_message& message) { write(message, token_); },
      [this, token = token_](sd_bus_message& reply) {
        open_.reset();
        if (!isError(reply) || token != token_) return;
        token_.clear();
        std::exchange(onResponse_, nullptr)(kRefused, reply);
      });
}

void Portal::onAnswer(sd_bus_message& signal) {
  const std::string_view path = sd_bus_message_get_path(&signal);
  if (token_.empty() || !path.ends_with("/" + token_)) return;
  std::uint32_t code = 0;
  if (sd_bus_message_read(&signal, "u", &code) <= 0) return;
  token_.clear();
  std::exchange(onResponse_, nullptr)(code, signal);
}

/// A portal that was started for our first call was not there before.
void Portal::portalChanged(bool wasThere, bool isThere) {
  if (wasThere) {
    dropRequest();
    open_.reset();
    callbacks_.onGone("the desktop's portal is gone");
  }
  if (isThere) callbacks_.onThere();
}

/// One that ended at our request is not asked the same again.
void Portal::backendEnded() {
  const bool wasAsking = isAsking();
  dropRequest();
  callbacks_.onGone("the desktop's portal has ended");
  if (!wasAsking) callbacks_.onThere();
}

void Portal::onSignal(const char* interface, const char* member, Bus::Handler handler) {
  bus_->onSignal(std::string("type='signal',sender='") + kService + "',interface='" + interface +
                     "',member='" + member + "'",
                 std::move(handler));
}

void Portal::close(const std::string& session, const std::function<void()>& then) {
  bus_->call(
      {kService, session.c_str(), "org.freedesktop.portal.Session", "Close"},
      [](sd_bus_message& /*call*/) {}, [then](sd_bus_message& /*reply*/) { then(); });
}

}  // namespace voxtrel::quillback
