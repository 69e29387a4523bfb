#pragma once

#include <QBackingStore>
#include <QWindow>
#include <memory>
#include <optional>

#include "platform/OverlayStage.h"
#include "platform/linux/PillPainter.h"

namespace voxtrel {

/// The overlay's window under X: unmanaged, so that it takes no focus, stands above full-screen
/// windows and shows on every workspace.
/// Thread: the main thread.  Owns: the native window, its pixels.
class FloatingWindow final : public OverlayWindow, private QWindow {
 public:
  /// `geometry` in Qt's coordinates.
  FloatingWindow(QScreen* screen, const QRect& geometry);

  void setContent(double cornerRadius, Draw draw) override;
  void orderFrontRegardless() override;
  void setNeedsDisplay() override;

 private:
  void exposeEvent(QExposeEvent* event) override;
  void preparePainter();
  void paint();
  void stayInFront();

  QBackingStore pixels_;
  double cornerRadius_ = 0;
  Draw draw_;
  std::optional<PillPainter> painter_;
  int framesSinceRaised_ = 0;
};

}  // namespace voxtrel
