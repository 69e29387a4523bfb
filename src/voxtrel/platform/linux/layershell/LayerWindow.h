#pragma once

#include <QRect>
#include <memory>
#include <optional>

#include "voxtrel/platform/OverlayStage.h"
#include "voxtrel/platform/linux/layershell/Compositor.h"
#include "voxtrel/platform/linux/layershell/SharedPictures.h"
#include "voxtrel/platform/linux/overlay/PillPainter.h"

namespace voxtrel {

/// The overlay's window under Wayland: a surface on the top layer, above full-screen windows, without
/// input. The compositor puts it on the output that has the focus, and removes it with that output.
/// Thread: the main thread.  Owns: the surface, its pixels and the connection, with others.
/// Fails by: not being visible.
class LayerWindow final : public OverlayWindow {
 public:
  /// `contentRect`: relative to the bottom centre of the output, in points.
  LayerWindow(std::shared_ptr<Compositor> compositor, const Rect& contentRect);
  ~LayerWindow() override;

  void setContent(double cornerRadius, Draw draw) override;
  void orderFrontRegardless() override;
  void setNeedsDisplay() override;

 private:
  void placeSurface();
  void followScale();
  void onConfigure(std::uint32_t serial);
  void onEnter(wl_output* output);
  void onScale(double scale);
  void preparePainter();
  void paint();
  void present(wl_buffer* buffer);

  const std::shared_ptr<Compositor> compositor_;
  const Rect contentRect_;
  double cornerRadius_ = 0;
  Draw draw_;
  WaylandOwned<wl_surface> surface_;
  WaylandOwned<zwlr_layer_surface_v1> layerSurface_;  ///< null once the compositor has closed it
  WaylandOwned<wp_viewport> viewport_;  ///< these two only for scales between integers
  WaylandOwned<wp_fractional_scale_v1> fractionalScale_;
  bool isConfigured_ = false;
  double scale_ = 1;
  std::optional<PillPainter> painter_;
  std::unique_ptr<SharedPictures> pictures_;
  QRect unshown_;  ///< pixels of the picture that the compositor does not have
};

}  // namespace voxtrel
