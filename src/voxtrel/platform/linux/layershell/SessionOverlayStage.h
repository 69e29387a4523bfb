#pragma once

#include <memory>

#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/OverlayStage.h"
#include "voxtrel/platform/linux/layershell/Compositor.h"
#include "voxtrel/platform/linux/overlay/QtOverlayStage.h"

namespace voxtrel {

/// The overlay's stage of this session: layers of the Wayland compositor where it has them, else the
/// X server, that of a Wayland session included.
/// Thread: the main thread.  Owns: both.  Borrows: Log.
/// Fails by: windows that are not visible, and one line in the log, where there is neither.
class SessionOverlayStage final : public OverlayStage {
 public:
  /// Asks the compositor without waiting for the reply.
  explicit SessionOverlayStage(Log& log);

  /// With layers, a frame without size: the bottom centre of the output that will have the focus,
  /// which only the compositor knows.
  std::optional<Rect> mainScreenFrame() override;
  std::vector<Rect> screenFrames() override { return screens_.screenFrames(); }
  std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) override;

 private:
  bool hasLayers();
  void reportMissingOnce();

  const Logger logger_;
  std::shared_ptr<Compositor> compositor_;
  QtOverlayStage screens_;
  bool usesLayers_ = false;  ///< since the last question for the frame
  bool isReported_ = false;
};

}  // namespace voxtrel
