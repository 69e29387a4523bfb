#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "voxtrel/platform/Canvas.h"
#include "voxtrel/platform/Geometry.h"

namespace voxtrel {

/// A borderless see-through window above everything, full-screen windows included, on every
/// workspace. It takes neither clicks nor focus. Destroying it orders it out.
/// Thread: the main thread.
class OverlayWindow {
 public:
  using Draw = std::function<void(Canvas&)>;

  virtual ~OverlayWindow() = default;

  /// What the window shows, cut to its rectangle with corners of `cornerRadius` points. `draw`
  /// paints the whole of it, from (0, 0), whenever the window needs display.
  virtual void setContent(double cornerRadius, Draw draw) = 0;

  /// Shows the window without activating the application.
  virtual void orderFrontRegardless() = 0;

  /// Has the content drawn again, at once or a little later; not at all while nobody can see it.
  virtual void setNeedsDisplay() = 0;
};

/// The screens, and the windows that float above them.
/// Thread: the main thread.
class OverlayStage {
 public:
  virtual ~OverlayStage() = default;

  /// Full frame of the screen that has the active window, as long as the desktop knows one.
  virtual std::optional<Rect> mainScreenFrame() = 0;

  /// Full frames of all screens.
  virtual std::vector<Rect> screenFrames() = 0;

  virtual std::unique_ptr<OverlayWindow> makeWindow(const Rect& contentRect) = 0;
};

}  // namespace voxtrel
