#pragma once

#include "voxtrel/platform/OverlayStage.h"

namespace voxtrel {

/// The screens as AppKit sees them, and floating windows that are on every space.
/// Thread: the main thread.
class AppKitOverlayStage final : public OverlayStage {
 public:
  /// The screen with the key window.
  std::optional<Rect> mainScreenFrame() override;
  std::vector<Rect> screenFrames() override;
  std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) override;
};

}  // namespace voxtrel
