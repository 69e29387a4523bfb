#include "voxtrel/platform/linux/overlay/FloatingWindow.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <cmath>
#include <utility>

namespace voxtrel {
namespace {

constexpr int kFramesBetweenRaises = 30;
constexpr int kAnyCoverage = 1;
constexpr int kHalfCoverage = 128;

}  // namespace

FloatingWindow::FloatingWindow(const XServer& server, QScreen* screen, const QRect& geometry)
    : QWindow(screen), server_(server), compositorQuestion_(server.askForCompositor()) {
  setSurfaceType(QSurface::RasterSurface);
  QSurfaceFormat translucent = format();
  translucent.setAlphaBufferSize(8);
  setFormat(translucent);
  setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
           Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput);
  setTitle(QStringLiteral("Voxtrel recording overlay"));
  setGeometry(geometry);
  create();
  surface_ = XcbSurface::make(server_, *this);
  if (!surface_) fallback_ = std::make_unique<QBackingStore>(static_cast<QWindow*>(this));
}

FloatingWindow::~FloatingWindow() {
  (void)hasCompositor();  // an unread reply would stay in the connection's memory
  surface_.reset();
  destroy();
  server_.flush();
}

// Read after the window was shown: the reply has arrived by then.
bool FloatingWindow::hasCompositor() {
  if (!hasCompositor_) hasCompositor_ = server_.hasCompositor(compositorQuestion_);
  return *hasCompositor_;
}

void FloatingWindow::setContent(double cornerRadius, Draw draw) {
  cornerRadius_ = cornerRadius;
  draw_ = std::move(draw);
}

void FloatingWindow::preparePainter() {
  const double scale = devicePixelRatio();
  const QSize sizePx(static_cast<int>(std::lround(width() * scale)),
                     static_cast<int>(std::lround(height() * scale)));
  if (painter_ && painter_->sizePx() == sizePx && painter_->scale() == scale) return;
  painter_.emplace(sizePx, scale, cornerRadius_);
  unshown_ = QRect();  // its first picture is new as a whole
  // Without transparency, leave out the pixels that are mostly outside the pill.
  const int coverage = hasCompositor() ? kAnyCoverage : kHalfCoverage;
  server_.setShape(static_cast<xcb_window_t>(winId()), painter_->pixels(coverage));
}

void FloatingWindow::orderFrontRegardless() {
  // A Wayland compositor would centre it and give it the focus, so show none.
  if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return;
  show();
  // The server maps an unmanaged window at once and accepts pixels right after, so the first frame
  // need not wait for the expose event.
  if (surface_) paint();
}

void FloatingWindow::setNeedsDisplay() {
  if (!isExposed()) return;
  stayInFront();
  paint();
}

// Windows opened later may be stacked above this one.
void FloatingWindow::stayInFront() {
  if (++framesSinceRaised_ < kFramesBetweenRaises) return;
  framesSinceRaised_ = 0;
  raise();
  server_.flush();  // Qt flushes only after events, and there may be none
}

void FloatingWindow::exposeEvent(QExposeEvent* /*event*/) {
  if (!isExposed()) return;
  if (painter_) unshown_ = painter_->picture().rect();  // the server may have dropped its pixels
  paint();
}

void FloatingWindow::paint() {
  if (!draw_) return;
  preparePainter();
  unshown_ |= painter_->paint(draw_);
  if (unshown_.isEmpty()) return;
  present();
  unshown_ = QRect();
}

void FloatingWindow::present() {
  if (surface_) return surface_->put(painter_->picture(), unshown_);
  const QRect all(QPoint(0, 0), size());
  if (fallback_->size() != size()) fallback_->resize(size());
  fallback_->beginPaint(all);
  QPainter painter(fallback_->paintDevice());
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.drawImage(all, painter_->picture());
  painter.end();
  fallback_->endPaint();
  fallback_->flush(all);
}

}  // namespace voxtrel
