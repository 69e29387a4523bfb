#include "voxtrel/platform/linux/layershell/LayerWindow.h"

#include <cmath>
#include <utility>

#include "fractional-scale-v1-client.h"
#include "viewporter-client.h"
#include "wlr-layer-shell-v1-client.h"

namespace voxtrel {
namespace {

constexpr std::uint32_t kOverlayLayer = 3;  ///< above "top", where full-screen windows are
constexpr std::uint32_t kBottomEdge = 2;  ///< anchored to one edge, a surface stands at its centre
constexpr std::int32_t kIgnorePanels = -1;  ///< the margin counts from the output's edge
constexpr std::uint32_t kNoKeyboard = 0;
constexpr const char* kScope = "voxtrel-overlay";  ///< for the user's rules in the compositor
constexpr double kFractionalScaleUnit = 120;

std::int32_t wholePoints(double points) {
  return static_cast<std::int32_t>(std::lround(points));
}

}  // namespace

LayerWindow::LayerWindow(std::shared_ptr<Compositor> compositor, const Rect& contentRect)
    : compositor_(std::move(compositor)), contentRect_(contentRect) {}

LayerWindow::~LayerWindow() {
  fractionalScale_.reset();
  viewport_.reset();
  layerSurface_.reset();
  surface_.reset();
  pictures_.reset();
  compositor_->flush();
  compositor_->wakeForEvents(true);
}

void LayerWindow::setContent(double cornerRadius, Draw draw) {
  cornerRadius_ = cornerRadius;
  draw_ = std::move(draw);
}

void LayerWindow::orderFrontRegardless() {
  if (surface_ || !compositor_->hasLayers()) return;
  surface_.reset(wl_compositor_create_surface(compositor_->surfaces()));
  const WaylandOwned<wl_region> nowhere(wl_compositor_create_region(compositor_->surfaces()));
  wl_surface_set_input_region(surface_.get(), nowhere.get());
  scale_ = compositor_->greatestScale();  // sharp at once, unless the outputs differ
  followScale();
  placeSurface();
  wl_surface_commit(surface_.get());
  compositor_->flush();
}

void LayerWindow::placeSurface() {
  static constexpr zwlr_layer_surface_v1_listener kListener = {
      .configure = [](void* self, zwlr_layer_surface_v1*, std::uint32_t serial, std::uint32_t,
                      std::uint32_t) { static_cast<LayerWindow*>(self)->onConfigure(serial); },
      .closed =
          [](void* self, zwlr_layer_surface_v1*) {
            static_cast<LayerWindow*>(self)->layerSurface_.reset();
          }};
  layerSurface_.reset(zwlr_layer_shell_v1_get_layer_surface(
      compositor_->layerShell(), surface_.get(), nullptr, kOverlayLayer, kScope));
  zwlr_layer_surface_v1* const placed = layerSurface_.get();
  zwlr_layer_surface_v1_add_listener(placed, &kListener, this);
  zwlr_layer_surface_v1_set_size(placed,
                                 static_cast<std::uint32_t>(wholePoints(contentRect_.width)),
                                 static_cast<std::uint32_t>(wholePoints(contentRect_.height)));
  zwlr_layer_surface_v1_set_anchor(placed, kBottomEdge);
  zwlr_layer_surface_v1_set_margin(placed, 0, 0, wholePoints(contentRect_.y), 0);
  zwlr_layer_surface_v1_set_exclusive_zone(placed, kIgnorePanels);
  zwlr_layer_surface_v1_set_keyboard_interactivity(placed, kNoKeyboard);
}

void LayerWindow::followScale() {
  if (!compositor_->hasFractionalScale()) {
    static const wl_surface_listener kListener = [] {
      wl_surface_listener listener{};  // newer libraries know more events, which we do not get
      listener.enter = [](void* self, wl_surface*, wl_output* output) {
        static_cast<LayerWindow*>(self)->onEnter(output);
      };
      listener.leave = [](void*, wl_surface*, wl_output*) {};
      return listener;
    }();
    wl_surface_add_listener(surface_.get(), &kListener, this);
    return;
  }
  static constexpr wp_fractional_scale_v1_listener kListener = {
      .preferred_scale = [](void* self, wp_fractional_scale_v1*, std::uint32_t scale) {
        static_cast<LayerWindow*>(self)->onScale(scale / kFractionalScaleUnit);
      }};
  viewport_.reset(wp_viewporter_get_viewport(compositor_->viewporter(), surface_.get()));
  wp_viewport_set_destination(viewport_.get(), wholePoints(contentRect_.width),
                              wholePoints(contentRect_.height));
  fractionalScale_.reset(wp_fractional_scale_manager_v1_get_fractional_scale(
      compositor_->fractionalScale(), surface_.get()));
  wp_fractional_scale_v1_add_listener(fractionalScale_.get(), &kListener, this);
}

void LayerWindow::onConfigure(std::uint32_t serial) {
  zwlr_layer_surface_v1_ack_configure(layerSurface_.get(), serial);
  isConfigured_ = true;
  compositor_->wakeForEvents(false);
  if (painter_) unshown_ = painter_->picture().rect();  // a configured surface waits for a picture
  paint();
}

void LayerWindow::onEnter(wl_output* output) {
  onScale(compositor_->scaleOf(output));
}

void LayerWindow::onScale(double scale) {
  if (scale <= 0 || scale == scale_) return;
  scale_ = scale;
  paint();
}

void LayerWindow::setNeedsDisplay() {
  compositor_->readEvents();
  paint();
}

void LayerWindow::preparePainter() {
  const QSize size(wholePoints(contentRect_.width * scale_),
                   wholePoints(contentRect_.height * scale_));
  if (painter_ && painter_->sizePx() == size && painter_->scale() == scale_) return;
  painter_.emplace(size, scale_, cornerRadius_);
  unshown_ = QRect();  // its first picture is new as a whole
  pictures_ = std::make_unique<SharedPictures>(compositor_->shm(), size);
}

void LayerWindow::paint() {
  if (!isConfigured_ || !layerSurface_ || !draw_ || compositor_->isBroken()) return;
  preparePainter();
  unshown_ |= painter_->paint(draw_);
  if (unshown_.isEmpty()) return;
  wl_buffer* const buffer = pictures_->put(painter_->picture());
  if (buffer == nullptr) return;  // the next frame tries again
  present(buffer);
  unshown_ = QRect();
}

void LayerWindow::present(wl_buffer* buffer) {
  if (!viewport_) wl_surface_set_buffer_scale(surface_.get(), static_cast<std::int32_t>(scale_));
  wl_surface_attach(surface_.get(), buffer, 0, 0);
  wl_surface_damage_buffer(surface_.get(), unshown_.x(), unshown_.y(), unshown_.width(),
                           unshown_.height());
  wl_surface_commit(surface_.get());
  compositor_->flush();
}

}  // namespace voxtrel
