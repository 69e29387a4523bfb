#include "voxtrel/platform/linux/layershell/SessionOverlayStage.h"

#include <QGuiApplication>
#include <utility>

#include "voxtrel/platform/linux/layershell/LayerWindow.h"

namespace voxtrel {

SessionOverlayStage::SessionOverlayStage(Log& log)
    : logger_(log, "audio"), compositor_(Compositor::connect()) {}

bool SessionOverlayStage::hasLayers() {
  // A compositor that has been restarted is known by the next showing.
  if (compositor_ && compositor_->isBroken()) compositor_ = Compositor::connect();
  return compositor_ && compositor_->hasLayers();
}

std::optional<Rect> SessionOverlayStage::mainScreenFrame() {
  usesLayers_ = hasLayers();
  if (usesLayers_) return Rect{};
  return screens_.mainScreenFrame();
}

std::unique_ptr<OverlayWindow> SessionOverlayStage::makeWindow(const Rect& contentRect) {
  if (usesLayers_) return std::make_unique<LayerWindow>(compositor_, contentRect);
  reportMissingOnce();
  return screens_.makeWindow(contentRect);
}

void SessionOverlayStage::reportMissingOnce() {
  const bool hasX = !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
  if (hasX || std::exchange(isReported_, true)) return;
  logger_.info("No overlay: the compositor has no layers for it, and there is no X server");
}

}  // namespace voxtrel
