#pragma once

#include "platform/OverlayStage.h"

namespace voxtrel {

/// The screens as Qt sees them.
/// Thread: the main thread.
class QtOverlayStage final : public OverlayStage {
 public:
  std::optional<Rect> mainScreenFrame() override;
  std::vector<Rect> screenFrames() override;
  std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) override;
};

}  // namespace voxtrel
