#include "platform/linux/FloatingWindow.h"

#include <QScreen>
#include <cmath>

#include "platform/linux/XcbConnection.h"

namespace voxtrel {
namespace {

constexpr int kFramesBetweenRaises = 30;
constexpr int kAnyCoverage = 1;
constexpr int kHalfCoverage = 128;

}  // namespace

FloatingWindow::FloatingWindow(QScreen* screen, const QRect& geometry)
    : QWindow(screen), pixels_(this) {
  setSurfaceType(QSurface::RasterSurface);
  QSurfaceFormat translucent = format();
  translucent.setAlphaBufferSize(8);
  setFormat(translucent);
  setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
           Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput);
  setTitle(QStringLiteral("Voxtrel recording overlay"));
  setGeometry(geometry);
  create();
}

void FloatingWindow::setContent(double cornerRadius, Draw draw) {
  cornerRadius_ = cornerRadius;
  draw_ = std::move(draw);
  preparePainter();
}

void FloatingWindow::preparePainter() {
  const double scale = devicePixelRatio();
  const QSize sizePx(static_cast<int>(std::lround(width() * scale)),
                     static_cast<int>(std::lround(height() * scale)));
  if (painter_ && painter_->sizePx() == sizePx && painter_->scale() == scale) return;
  painter_.emplace(sizePx, scale, cornerRadius_);
  // With a compositor the corners' pixels fade out by themselves; without one they cannot, and
  // those that are mostly outside the pill are left away.
  const XcbConnection server;
  const int coverage = server.hasCompositor() ? kAnyCoverage : kHalfCoverage;
  if (server) server.setShape(static_cast<xcb_window_t>(winId()), painter_->pixels(coverage));
}

void FloatingWindow::orderFrontRegardless() {
  show();
  raise();
}

void FloatingWindow::setNeedsDisplay() {
  if (!isExposed()) return;
  stayInFront();
  paint();
}

// A full-screen window that opens later may be stacked above us.
void FloatingWindow::stayInFront() {
  if (++framesSinceRaised_ < kFramesBetweenRaises) return;
  framesSinceRaised_ = 0;
  raise();
}

void FloatingWindow::exposeEvent(QExposeEvent* /*event*/) {
  if (isExposed()) paint();
}

void FloatingWindow::paint() {
  if (!draw_) return;
  preparePainter();
  if (pixels_.size() != size()) pixels_.resize(size());
  const QRect all(QPoint(0, 0), size());
  pixels_.beginPaint(all);
  painter_->paint(*pixels_.paintDevice(), draw_);
  pixels_.endPaint();
  pixels_.flush(all);
}

}  // namespace voxtrel
