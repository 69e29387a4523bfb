#pragma once

#include <optional>

#include "voxtrel/platform/OverlayStage.h"
#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {

/// The screens as Qt sees them, and X windows above them.
/// Thread: the main thread.  Owns: the X server's properties, read when first needed.
class QtOverlayStage final : public OverlayStage {
 public:
  std::optional<Rect> mainScreenFrame() override;
  std::vector<Rect> screenFrames() override;
  std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) override;

 private:
  const XServer& server();

  std::optional<XServer> server_;
};

}  // namespace voxtrel
