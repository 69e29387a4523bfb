#pragma once

#include <QBackingStore>
#include <QImage>
#include <QWindow>
#include <memory>
#include <optional>

#include "voxtrel/platform/OverlayStage.h"
#include "voxtrel/platform/linux/overlay/PillPainter.h"
#include "voxtrel/platform/linux/overlay/XcbSurface.h"
#include "voxtrel/platform/linux/x11/XServer.h"

namespace voxtrel {

/// The overlay's window under X. It is unmanaged, so that it takes no focus, stays above full-screen
/// windows and shows on every workspace.
/// Thread: the main thread.  Owns: the native window, its pixels.  Borrows: the connection.
class FloatingWindow final : public OverlayWindow, private QWindow {
 public:
  /// `geometry` in Qt's coordinates.
  FloatingWindow(const XServer& server, QScreen* screen, const QRect& geometry);
  ~FloatingWindow() override;

  void setContent(double cornerRadius, Draw draw) override;
  void orderFrontRegardless() override;
  void setNeedsDisplay() override;

 private:
  void exposeEvent(QExposeEvent* event) override;
  bool hasCompositor();
  void preparePainter();
  void paint();
  void present();
  void stayInFront();

  const XServer& server_;
  xcb_get_selection_owner_cookie_t compositorQuestion_;
  std::optional<bool> hasCompositor_;
  std::unique_ptr<XcbSurface> surface_;
  std::unique_ptr<QBackingStore> fallback_;
  double cornerRadius_ = 0;
  Draw draw_;
  std::optional<PillPainter> painter_;
  QRect unshown_;  ///< pixels of the picture that the server does not have
  int framesSinceRaised_ = 0;
};

}  // namespace voxtrel
