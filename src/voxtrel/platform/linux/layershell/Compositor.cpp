#include "voxtrel/platform/linux/layershell/Compositor.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "fractional-scale-v1-client.h"
#include "viewporter-client.h"
#include "wlr-layer-shell-v1-client.h"

namespace voxtrel {
namespace {

// The newest versions whose requests and events we know.
constexpr std::uint32_t kCompositorVersion = 4;
constexpr std::uint32_t kOutputVersion = 3;
constexpr std::uint32_t kLayerShellVersion = 4;

constexpr std::uint32_t kMinCompositorVersion = 4;  ///< damage in pixels of the buffer
constexpr std::uint32_t kMinOutputVersion = 2;      ///< a scale

}  // namespace

void WaylandDestroy::operator()(wl_buffer* object) const {
  wl_buffer_destroy(object);
}
void WaylandDestroy::operator()(wl_compositor* object) const {
  wl_compositor_destroy(object);
}
void WaylandDestroy::operator()(wl_output* object) const {
  if (wl_output_get_version(object) >= WL_OUTPUT_RELEASE_SINCE_VERSION) {
    wl_output_release(object);
  } else {
    wl_output_destroy(object);
  }
}
void WaylandDestroy::operator()(wl_region* object) const {
  wl_region_destroy(object);
}
void WaylandDestroy::operator()(wl_registry* object) const {
  wl_registry_destroy(object);
}
void WaylandDestroy::operator()(wl_shm* object) const {
  wl_shm_destroy(object);
}
void WaylandDestroy::operator()(wl_surface* object) const {
  wl_surface_destroy(object);
}
void WaylandDestroy::operator()(wp_fractional_scale_manager_v1* object) const {
  wp_fractional_scale_manager_v1_destroy(object);
}
void WaylandDestroy::operator()(wp_fractional_scale_v1* object) const {
  wp_fractional_scale_v1_destroy(object);
}
void WaylandDestroy::operator()(wp_viewport* object) const {
  wp_viewport_destroy(object);
}
void WaylandDestroy::operator()(wp_viewporter* object) const {
  wp_viewporter_destroy(object);
}
void WaylandDestroy::operator()(zwlr_layer_shell_v1* object) const {
  if (zwlr_layer_shell_v1_get_version(object) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION) {
    zwlr_layer_shell_v1_destroy(object);
  } else {
    wl_proxy_destroy(reinterpret_cast<wl_proxy*>(object));
  }
}
void WaylandDestroy::operator()(zwlr_layer_surface_v1* object) const {
  zwlr_layer_surface_v1_destroy(object);
}

std::shared_ptr<Compositor> Compositor::connect() {
  auto connection = WaylandConnection::open();
  if (!connection) return nullptr;
  return std::shared_ptr<Compositor>(new Compositor(std::move(connection)));
}

Compositor::Compositor(std::unique_ptr<WaylandConnection> connection)
    : connection_(std::move(connection)),
      readable_(connection_->descriptor(), QSocketNotifier::Read),
      registry_(wl_display_get_registry(connection_->get())) {
  QObject::connect(&readable_, &QSocketNotifier::activated, &readable_, [this] { readEvents(); });
  listen();
  connection_->flush();
}

void Compositor::listen() {
  static constexpr wl_registry_listener kListener = {
      .global =
          [](void* self, wl_registry*, std::uint32_t name, const char* interface,
             std::uint32_t version) {
            static_cast<Compositor*>(self)->onGlobal(name, interface, version);
          },
      .global_remove =
          [](void* self, wl_registry*, std::uint32_t name) {
            static_cast<Compositor*>(self)->onGlobalRemoved(name);
          }};
  wl_registry_add_listener(registry_.get(), &kListener, this);
}

void Compositor::readEvents() {
  connection_->dispatch();
  if (isBroken()) readable_.setEnabled(false);  // it would stay readable
}

void Compositor::onGlobal(std::uint32_t name, const char* interface, std::uint32_t version) {
  const std::string_view kind(interface);
  const auto bind = [&](auto& global, const wl_interface& type, std::uint32_t newest) {
    using Object = typename std::remove_reference_t<decltype(global)>::pointer;
    const std::uint32_t agreed = std::min(version, newest);
    global.reset(static_cast<Object>(wl_registry_bind(registry_.get(), name, &type, agreed)));
  };
  if (kind == wl_compositor_interface.name && version >= kMinCompositorVersion) {
    bind(compositor_, wl_compositor_interface, kCompositorVersion);
  } else if (kind == wl_shm_interface.name) {
    bind(shm_, wl_shm_interface, 1);
  } else if (kind == wp_viewporter_interface.name) {
    bind(viewporter_, wp_viewporter_interface, 1);
  } else if (kind == wp_fractional_scale_manager_v1_interface.name) {
    bind(fractionalScale_, wp_fractional_scale_manager_v1_interface, 1);
  } else if (kind == zwlr_layer_shell_v1_interface.name) {
    bind(layerShell_, zwlr_layer_shell_v1_interface, kLayerShellVersion);
  } else if (kind == wl_output_interface.name && version >= kMinOutputVersion) {
    Output& output = outputs_[name];
    bind(output.object, wl_output_interface, kOutputVersion);
    listenTo(output);
  }
}

void Compositor::listenTo(Output& output) {
  static constexpr wl_output_listener kListener = {
      .geometry = [](void*, wl_output*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                     std::int32_t, const char*, const char*, std::int32_t) {},
      .mode = [](void*, wl_output*, std::uint32_t, std::int32_t, std::int32_t, std::int32_t) {},
      .done = [](void*, wl_output*) {},
      .scale = [](void* scale, wl_output*,
                  std::int32_t factor) { *static_cast<int*>(scale) = factor; },
      .name = nullptr,
      .description = nullptr};
  wl_output_add_listener(output.object.get(), &kListener, &output.scale);
}

int Compositor::scaleOf(wl_output* output) const {
  const auto found = std::find_if(outputs_.begin(), outputs_.end(), [&](const auto& each) {
    return each.second.object.get() == output;
  });
  return found == outputs_.end() ? 1 : found->second.scale;
}

int Compositor::greatestScale() const {
  int greatest = 1;
  for (const auto& [name, output] : outputs_) greatest = std::max(greatest, output.scale);
  return greatest;
}

}  // namespace voxtrel
