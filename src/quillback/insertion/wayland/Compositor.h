#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "common/wayland/WaylandConnection.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// The Wayland compositor as the engine uses it: its first seat and what it offers.
/// Thread: the loop's.  Owns: the connection; objects bound over it must be destroyed before.
/// Borrows: Loop (must outlive this).
/// Fails by: null from `open`; later `onLost`.
class Compositor {
 public:
  /// Waits until the compositor has said what it offers. `onLost` is called once, on the loop, and may
  /// destroy this.
  [[nodiscard]] static std::unique_ptr<Compositor> open(Loop& loop, std::function<void()> onLost);
  Compositor(const Compositor&) = delete;
  Compositor& operator=(const Compositor&) = delete;
  ~Compositor();

  /// Null if there is none.
  wl_seat* seat() const { return seat_; }
  bool offers(const wl_interface& interface) const;
  /// Null if it is not offered. `version`: the highest that we know.
  template <typename Object>
  Object* bind(const wl_interface& interface, std::uint32_t version) const {
    return static_cast<Object*>(bindAny(interface, version));
  }

  void flush() const { connection_->flush(); }
  /// Runs `task` once the compositor has handled all that was requested so far; never if it is lost.
  void sync(std::function<void()> task);

 private:
  struct Global {
    std::uint32_t name;
    std::uint32_t version;
  };

  Compositor(std::unique_ptr<WaylandConnection> connection, std::function<void()> onLost);
  void* bindAny(const wl_interface& interface, std::uint32_t version) const;
  void dispatch();

  static void onGlobal(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t version);
  static void onGone(void* self, wl_registry* registry, std::uint32_t name);
  static void onSync(void* self, wl_callback* callback, std::uint32_t serial);

  std::unique_ptr<WaylandConnection> connection_;
  wl_registry* registry_;
  wl_seat* seat_ = nullptr;
  std::map<std::string, Global, std::less<>> globals_;
  std::map<wl_callback*, std::function<void()>> syncs_;
  std::function<void()> onLost_;
  std::unique_ptr<Loop::Watch> watch_;
};

}  // namespace voxtrel::quillback
