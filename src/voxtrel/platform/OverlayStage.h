#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "voxtrel/platform/Canvas.h"
#include "voxtrel/platform/Subscription.h"

namespace voxtrel {

/// A borderless transparent window above all others, full-screen ones included, on every workspace.
/// It takes neither clicks nor focus. Destroying it removes it from the screen.
/// Thread: the main thread.
class OverlayWindow {
 public:
  using Draw = std::function<void(Canvas&)>;

  virtual ~OverlayWindow() = default;

  /// Sets what the window shows, clipped to corners of `cornerRadius` points. `draw` paints all of it,
  /// from (0, 0), whenever the window needs display.
  virtual void setContent(double cornerRadius, Draw draw) = 0;

  /// Shows the window without activating the application.
  virtual void orderFrontRegardless() = 0;

  /// Requests a redraw, now or soon. Ignored while the window is not visible.
  virtual void setNeedsDisplay() = 0;
};

/// The screens, and the windows that float above them.
/// Thread: the main thread.
class OverlayStage {
 public:
  virtual ~OverlayStage() = default;

  /// Full frame of the screen with the active window; none if the desktop does not know it.
  virtual std::optional<Rect> mainScreenFrame() = 0;

  /// Full frames of all screens.
  virtual std::vector<Rect> screenFrames() = 0;

  virtual std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) = 0;
};

/// A repeating timer for animation.
/// Thread: the main thread.
class FrameTimer {
 public:
  virtual ~FrameTimer() = default;

  /// Runs `task` every `interval` until the handle is gone. Whether late ticks are made up for is the
  /// adapter's choice.
  [[nodiscard]] virtual Subscription everyFrame(std::chrono::duration<double> interval,
                                                std::function<void()> task) = 0;
};

}  // namespace voxtrel
