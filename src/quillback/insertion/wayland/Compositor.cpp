#include "quillback/insertion/wayland/Compositor.h"

#include <algorithm>
#include <utility>

namespace voxtrel::quillback {

std::unique_ptr<Compositor> Compositor::open(Loop& loop, std::function<void()> onLost) {
  auto connection = WaylandConnection::open();
  if (!connection) return nullptr;
  std::unique_ptr<Compositor> compositor(new Compositor(std::move(connection), std::move(onLost)));
  wl_display_roundtrip(compositor->connection_->get());
  if (compositor->connection_->isBroken()) return nullptr;
  compositor->seat_ = compositor->bind<wl_seat>(wl_seat_interface, 1);
  compositor->watch_ = loop.watch(compositor->connection_->descriptor(),
                                  [self = compositor.get()] { self->dispatch(); });
  return compositor;
}

Compositor::Compositor(std::unique_ptr<WaylandConnection> connection, std::function<void()> onLost)
    : connection_(std::move(connection)),
      registry_(wl_display_get_registry(connection_->get())),
      onLost_(std::move(onLost)) {
  static constexpr wl_registry_listener kListener{&Compositor::onGlobal, &Compositor::onGone};
  wl_registry_add_listener(registry_, &kListener, this);
}

Compositor::~Compositor() {
  watch_.reset();
  for (const auto& [callback, task] : syncs_) wl_callback_destroy(callback);
  if (seat_ != nullptr) wl_seat_destroy(seat_);
  wl_registry_destroy(registry_);
}

bool Compositor::offers(const wl_interface& interface) const {
  return globals_.contains(std::string_view(interface.name));
}

void* Compositor::bindAny(const wl_interface& interface, std::uint32_t version) const {
  const auto found = globals_.find(std::string_view(interface.name));
  if (found == globals_.end()) return nullptr;
  return wl_registry_bind(registry_, found->second.name, &interface,
                          std::min(version, found->second.version));
}

void Compositor::sync(std::function<void()> task) {
  static constexpr wl_callback_listener kListener{&Compositor::onSync};
  wl_callback* const callback = wl_display_sync(connection_->get());
  wl_callback_add_listener(callback, &kListener, this);
  syncs_.emplace(callback, std::move(task));
  flush();
}

void Compositor::dispatch() {
  connection_->dispatch();
  if (!connection_->isBroken()) return;
  watch_.reset();
  const auto onLost = std::exchange(onLost_, nullptr);
  if (onLost) onLost();
}

void Compositor::onGlobal(void* self, wl_registry* /*registry*/, std::uint32_t name,
                          const char* interface, std::uint32_t version) {
  // The first seat of several is the user's.
  static_cast<Compositor*>(self)->globals_.emplace(interface, Global{name, version});
}

void Compositor::onGone(void* self, wl_registry* /*registry*/, std::uint32_t name) {
  auto& globals = static_cast<Compositor*>(self)->globals_;
  std::erase_if(globals, [name](const auto& global) { return global.second.name == name; });
}

void Compositor::onSync(void* self, wl_callback* callback, std::uint32_t /*serial*/) {
  const auto done = static_cast<Compositor*>(self)->syncs_.extract(callback);
  wl_callback_destroy(callback);
  if (!done.empty()) done.mapped()();
}

}  // namespace voxtrel::quillback
