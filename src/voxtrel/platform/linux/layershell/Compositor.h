#pragma once

#include <QSocketNotifier>
#include <cstdint>
#include <map>
#include <memory>

#include "common/wayland/WaylandConnection.h"

struct wp_fractional_scale_manager_v1;
struct wp_fractional_scale_v1;
struct wp_viewport;
struct wp_viewporter;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace voxtrel {

/// Destroys an object on both sides of the connection.
struct WaylandDestroy {
  void operator()(wl_buffer* object) const;
  void operator()(wl_compositor* object) const;
  void operator()(wl_output* object) const;
  void operator()(wl_region* object) const;
  void operator()(wl_registry* object) const;
  void operator()(wl_shm* object) const;
  void operator()(wl_surface* object) const;
  void operator()(wp_fractional_scale_manager_v1* object) const;
  void operator()(wp_fractional_scale_v1* object) const;
  void operator()(wp_viewport* object) const;
  void operator()(wp_viewporter* object) const;
  void operator()(zwlr_layer_shell_v1* object) const;
  void operator()(zwlr_layer_surface_v1* object) const;
};
template <typename Object>
using WaylandOwned = std::unique_ptr<Object, WaylandDestroy>;

/// What the Wayland compositor offers for the overlay. It is asked once; its reply arrives with the
/// main loop's events.
/// Thread: the main thread, which must run Qt's event loop.  Owns: the connection and the globals.
/// Fails by: offering nothing.
class Compositor {
 public:
  /// Null without a Wayland session.
  static std::shared_ptr<Compositor> connect();
  Compositor(const Compositor&) = delete;
  Compositor& operator=(const Compositor&) = delete;

  bool isBroken() const { return connection_->isBroken(); }
  /// Whether surfaces can stand on a layer above all windows.
  bool hasLayers() const { return layerShell_ && compositor_ && shm_ && !isBroken(); }
  /// The compositor can show a surface at any scale, and says at which.
  bool hasFractionalScale() const { return viewporter_ && fractionalScale_; }

  wl_compositor* surfaces() const { return compositor_.get(); }
  wl_shm* shm() const { return shm_.get(); }
  wp_viewporter* viewporter() const { return viewporter_.get(); }
  wp_fractional_scale_manager_v1* fractionalScale() const { return fractionalScale_.get(); }
  zwlr_layer_shell_v1* layerShell() const { return layerShell_.get(); }

  /// Of an output that this connection has told a surface of; 1 if unknown.
  int scaleOf(wl_output* output) const;
  /// Of all outputs; 1 without any.
  int greatestScale() const;
  void flush() const { connection_->flush(); }
  /// Handles the events that have arrived. While frames do this, the main loop need not wake up for each
  /// event, of which there is one a frame.
  void readEvents();
  void wakeForEvents(bool wakes) { readable_.setEnabled(wakes && !isBroken()); }

 private:
  struct Output {
    WaylandOwned<wl_output> object;
    int scale = 1;
  };

  explicit Compositor(std::unique_ptr<WaylandConnection> connection);
  void listen();
  void onGlobal(std::uint32_t name, const char* interface, std::uint32_t version);
  void onGlobalRemoved(std::uint32_t name) { outputs_.erase(name); }
  static void listenTo(Output& output);

  std::unique_ptr<WaylandConnection> connection_;
  QSocketNotifier readable_;
  WaylandOwned<wl_registry> registry_;
  WaylandOwned<wl_compositor> compositor_;
  WaylandOwned<wl_shm> shm_;
  WaylandOwned<wp_viewporter> viewporter_;
  WaylandOwned<wp_fractional_scale_manager_v1> fractionalScale_;
  WaylandOwned<zwlr_layer_shell_v1> layerShell_;
  std::map<std::uint32_t, Output> outputs_;  ///< by the registry's names
};

}  // namespace voxtrel
